// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/AssetQuestion.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/worker/AssetAnswer.h"
#include "platform/linux/worker/MediaQuestion.h"

namespace platform::worker {

std::optional<MediaAssetProperties>
mediaAssetProperties(MediaWorker& worker, const std::string& path, bool wantsMetadata) {
    MediaRequest request;
    request.kind = MediaKind::mediaAsset;
    request.wantsMetadata = wantsMetadata;
    return answerTo(request, worker, openRegularFile(path), decodedMediaAsset,
                    [wantsMetadata](const MediaAssetProperties& properties) {
                        return wantsMetadata || properties.commonMetadata.empty();
                    })
        .properties;
}

} // namespace platform::worker
