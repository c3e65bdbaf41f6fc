// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"
#include "platform/linux/worker/MediaWorker.h"

#include <optional>

namespace platform::worker {

/// What a process of `worker` says of `file`, read by `decoded`, which takes a DataView and answers
/// an optional. nullopt when the file is not open, when there is no answer or none that can be
/// read, and when `isWanted` refuses what was read: what nobody asked for is not what was asked for
/// either. Any thread.
template <class Decoder, class Check>
[[nodiscard]] auto answerTo(const MediaRequest& request, MediaWorker& worker,
                            const Descriptor& file, const Decoder& decoded, const Check& isWanted) {
    decltype(decoded(DataView())) properties;
    const bool isAnswered =
        file.number() >= 0 && worker.ask(request, file.number(), [&](DataView value) {
            properties = decoded(value);
            return properties && isWanted(*properties);
        });
    return isAnswered ? properties : std::nullopt;
}

} // namespace platform::worker
