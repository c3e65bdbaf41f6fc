// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/ImageQuestion.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/worker/ImageAnswer.h"
#include "platform/linux/worker/MediaQuestion.h"

namespace platform::worker {

std::optional<ImageProperties> imageProperties(MediaWorker& worker, const std::string& path,
                                               bool wantsImageCount) {
    MediaRequest request;
    request.kind = MediaKind::imageProperties;
    request.wantsImageCount = wantsImageCount;
    return answerTo(request, worker, openRegularFile(path), decodedImageProperties,
                    [wantsImageCount](const ImageProperties& properties) {
                        return wantsImageCount || !properties.imageCount;
                    })
        .properties;
}

} // namespace platform::worker
