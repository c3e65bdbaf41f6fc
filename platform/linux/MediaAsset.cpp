// SPDX-License-Identifier: Apache-2.0
#include "platform/MediaAsset.h"

#include "platform/linux/worker/AssetQuestion.h"

namespace platform {

std::optional<MediaAssetProperties> mediaAssetPropertiesOfFile(const std::string& path,
                                                               bool wantsMetadata) {
    return worker::mediaAssetProperties(worker::MediaWorker::shared(worker::MediaKind::mediaAsset),
                                        path, wantsMetadata);
}

} // namespace platform
