// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MediaAsset.h"
#include "platform/linux/worker/MediaWorker.h"

#include <optional>
#include <string>

namespace platform::worker {

/// `mediaAssetPropertiesOfFile` by the processes of `worker`. The file is opened here, as they can
/// open none. Any thread.
[[nodiscard]] std::optional<MediaAssetProperties>
mediaAssetProperties(MediaWorker& worker, const std::string& path, bool wantsMetadata);

} // namespace platform::worker
