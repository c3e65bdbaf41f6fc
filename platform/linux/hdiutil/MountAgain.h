// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/AttachRecord.h"

#include <cstddef>

namespace platform::hdiutil {

/// Mounts a volume of an image with several, which was unmounted, again at the empty folder that
/// the record names, or where the disk service likes, and says in the record how. False when that
/// fails, and the folder is gone then, or when the disk is no longer divided as it was when the
/// image was attached.
[[nodiscard]] bool mountAgain(AttachRecord& record, std::size_t volumeNumber);

} // namespace platform::hdiutil
