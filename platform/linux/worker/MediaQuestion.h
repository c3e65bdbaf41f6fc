// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"
#include "platform/linux/worker/MediaWorker.h"

#include <optional>

namespace platform::worker {

/// What there is to say of a file.
template <class Properties>
struct FileAnswer {
    std::optional<Properties> properties;
    /// Whether the file is the reason that there are none: it is not what it was asked for as.
    bool isNothing = false;
};

/// What a process of `worker` says of `file`, read by `decoded`, which takes a DataView and answers
/// an optional. No properties when the file is not open, when there is no answer or none that can
/// be read, and when `isWanted` refuses what was read: what nobody asked for is not what was asked
/// for either. Any thread.
template <class Decoder, class Check>
[[nodiscard]] auto answerTo(const MediaRequest& request, MediaWorker& worker,
                            const Descriptor& file, const Decoder& decoded, const Check& isWanted) {
    using Outcome = MediaWorker::Outcome;
    FileAnswer<typename decltype(decoded(DataView()))::value_type> answer;
    const Outcome outcome = file.number() < 0
                                ? Outcome::nothing
                                : worker.ask(request, file.number(), [&](DataView value) {
                                      answer.properties = decoded(value);
                                      return answer.properties && isWanted(*answer.properties);
                                  });
    if (outcome != Outcome::value) {
        answer.properties.reset();
    }
    answer.isNothing = outcome == Outcome::nothing;
    return answer;
}

} // namespace platform::worker
