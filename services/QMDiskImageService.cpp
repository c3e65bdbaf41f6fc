// SPDX-License-Identifier: Apache-2.0
#include "services/QMDiskImageService.h"

#include "foundation/QMDiskImageExtensions.h"

bool QMDiskImageService::isMountableDiskImage(std::string_view path) {
    return qm_hasMountableDiskImageExtension(path);
}
