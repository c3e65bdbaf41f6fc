// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/Udif.h"
#include "platform/linux/hdiutil/UdifResources.h"

#include <variant>

namespace platform::hdiutil {

/// What chunks are held against.
struct UdifLimits {
    /// Bytes of the image's file.
    std::uint64_t fileSize;
    /// Where in it the data starts; at most `fileSize`.
    std::uint64_t dataForkOffset;
    /// Sectors of the disk.
    std::uint64_t sectorCount;
};

/// Reads one block table ("mish"). Every chunk of the answer is within the limits. The bytes may be
/// hostile; any thread.
[[nodiscard]] std::variant<UdifTable, UdifError> readUdifBlockTable(UdifResource resource,
                                                                    const UdifLimits& limits);

} // namespace platform::hdiutil
