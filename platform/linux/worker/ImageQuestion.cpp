// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/ImageQuestion.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/worker/ImageAnswer.h"

namespace platform::worker {

std::optional<ImageProperties> imageProperties(MediaWorker& worker, const std::string& path,
                                               bool wantsImageCount) {
    const Descriptor file = openRegularFile(path);
    if (file.number() < 0) {
        return std::nullopt;
    }
    MediaRequest request;
    request.kind = MediaKind::imageProperties;
    request.wantsImageCount = wantsImageCount;
    std::optional<ImageProperties> properties;
    const bool isAnswered = worker.ask(request, file.number(), [&](DataView value) {
        properties = decodedImageProperties(value);
        // A count that nobody asked for is not what was asked for either.
        return properties && (wantsImageCount || !properties->imageCount);
    });
    return isAnswered ? properties : std::nullopt;
}

} // namespace platform::worker
