// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

#include <cstdint>
#include <vector>

namespace platform::hdiutil {

/// Some bytes of a volume.
struct Stretch {
    std::uint64_t offset;
    std::uint64_t length;
};

/// The stretches of a volume that show what file system it holds and how it is called: its
/// beginning, its end, and those to which the beginning of an NTFS, FAT32, exFAT or HFS+ volume
/// points. All lie within `bytes`, and together they are less than 4 MiB. Any thread.
[[nodiscard]] std::vector<Stretch> volumeLandmarks(const ByteSource& bytes);

} // namespace platform::hdiutil
