// SPDX-License-Identifier: Apache-2.0
// Reads images for processes that would rather not; see docs/architecture.md.
#include "platform/linux/media/ImageReader.h"
#include "platform/linux/worker/ImageAnswer.h"
#include "platform/linux/worker/WorkerLoop.h"

int main() {
    using namespace platform;
    media::prepareImageReaders();
    return worker::serveMedia(
        [](const worker::MediaRequest& request, int descriptor) -> std::optional<Data> {
            if (request.kind != worker::MediaKind::imageProperties) {
                return std::nullopt;
            }
            const auto properties = media::readImage(descriptor, request.wantsImageCount);
            return properties ? std::optional(worker::encodedImageProperties(*properties))
                              : std::nullopt;
        });
}
