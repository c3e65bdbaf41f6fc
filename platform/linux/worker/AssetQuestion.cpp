// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/AssetQuestion.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/worker/AssetAnswer.h"

namespace platform::worker {

std::optional<MediaAssetProperties>
mediaAssetProperties(MediaWorker& worker, const std::string& path, bool wantsMetadata) {
    const Descriptor file = openRegularFile(path);
    if (file.number() < 0) {
        return std::nullopt;
    }
    MediaRequest request;
    request.kind = MediaKind::mediaAsset;
    request.wantsMetadata = wantsMetadata;
    std::optional<MediaAssetProperties> properties;
    const bool isAnswered = worker.ask(request, file.number(), [&](DataView value) {
        properties = decodedMediaAsset(value);
        // Items that nobody asked for are not what was asked for either.
        return properties && (wantsMetadata || properties->commonMetadata.empty());
    });
    return isAnswered ? properties : std::nullopt;
}

} // namespace platform::worker
