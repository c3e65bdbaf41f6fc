// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/linux/hdiutil/Udif.h"

#include <cstdint>
#include <optional>
#include <vector>

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

/// Reads one block table ("mish") and adds its chunks to `chunks`, all of them within the limits.
/// Answers what is wrong with it, if anything is. The bytes may be hostile; any thread.
[[nodiscard]] std::optional<UdifError> readUdifBlockTable(DataView table, const UdifLimits& limits,
                                                          std::vector<UdifChunk>& chunks);

} // namespace platform::hdiutil
