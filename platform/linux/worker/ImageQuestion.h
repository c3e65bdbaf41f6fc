// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ImageSource.h"
#include "platform/linux/worker/MediaWorker.h"

#include <optional>
#include <string>

namespace platform::worker {

/// `imagePropertiesOfFile` by the processes of `worker`. The file is opened here, as they can open
/// none. Any thread.
[[nodiscard]] std::optional<ImageProperties>
imageProperties(MediaWorker& worker, const std::string& path, bool wantsImageCount);

} // namespace platform::worker
