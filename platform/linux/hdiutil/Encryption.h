// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

namespace platform::hdiutil {

/// Whether `file` is an encrypted disk image: the current form has a header, the old one a trailer
/// (as seen in images). Such images are recognised and not opened.
[[nodiscard]] bool isEncryptedImage(const ByteSource& file);

} // namespace platform::hdiutil
