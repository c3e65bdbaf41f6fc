// SPDX-License-Identifier: Apache-2.0
#include "platform/ImageSource.h"

#include "platform/linux/worker/ImageQuestion.h"

namespace platform {

std::optional<ImageProperties> imagePropertiesOfFile(const std::string& path,
                                                     bool wantsImageCount) {
    return worker::imageProperties(worker::MediaWorker::shared(worker::MediaKind::imageProperties),
                                   path, wantsImageCount);
}

} // namespace platform
