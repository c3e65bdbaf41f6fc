// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PropertyList.h"
#include "platform/linux/hdiutil/DiskImage.h"

namespace platform::hdiutil {

/// What is to be told of an image, in the shape that macOS gives it; besides, "Total Bytes",
/// "Compressed Bytes" and "Encrypted" at the top level, where they are easily found. Sizes are
/// bytes, starts and lengths of partitions blocks of 512 bytes.
[[nodiscard]] PropertyList imageInfo(const DiskImage& image);

} // namespace platform::hdiutil
