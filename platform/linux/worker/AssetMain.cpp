// SPDX-License-Identifier: Apache-2.0
// Reads films and recordings for processes that would rather not; see docs/architecture.md.
#include "platform/linux/av/AvReader.h"
#include "platform/linux/worker/AssetAnswer.h"
#include "platform/linux/worker/WorkerLoop.h"

int main() {
    using namespace platform;
    av::prepareReader();
    return worker::serveMedia(
        [](const worker::MediaRequest& request, int descriptor) -> std::optional<Data> {
            if (request.kind != worker::MediaKind::mediaAsset) {
                return std::nullopt;
            }
            const auto asset = av::readMediaAsset(descriptor, request.wantsMetadata);
            return asset ? std::optional(worker::encodedMediaAsset(*asset)) : std::nullopt;
        });
}
