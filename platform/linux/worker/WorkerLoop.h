// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/worker/MediaMessage.h"

#include <functional>
#include <optional>

/// The process that reads media, from its own side.
namespace platform::worker {

/// Where it finds its end of the socket for requests, and that of the one by which it is ended.
inline constexpr int requestSocket = 0;
inline constexpr int lifelineSocket = 1;

/// Reads the file of a request and answers its value, nullopt or nothing at all when it cannot. It
/// may move the position of the descriptor, which is closed afterwards, but not close it. What it
/// throws counts as nullopt.
using MediaHandler =
    std::function<std::optional<Data>(const MediaRequest& request, int descriptor)>;

/// Confines this process for good (see Confinement.h), then answers requests by `handler` until
/// there is nobody left to make them. Answers the exit status. Values that are too large to be sent
/// count as none.
[[nodiscard]] int serveMedia(const MediaHandler& handler);

} // namespace platform::worker
