// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"
#include "platform/linux/hdiutil/PartitionMap.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// The schemes that `readPartitionMap` knows, one file each. Any thread.
namespace platform::hdiutil {

/// What the first 512 bytes of a disk are to those who look for a partition map.
enum class FirstSector {
    other,         ///< no boot sector at all
    boot,          ///< a boot sector that holds no partitions, such as that of a file system
    partitions,    ///< an MBR
    protectiveMbr, ///< an MBR that only tells of a GPT, perhaps with some partitions repeated
};

/// What the first sector of `disk` is.
[[nodiscard]] FirstSector firstSectorOf(const ByteSource& disk);

/// The partitions of an MBR; the caller has made sure that there is one.
[[nodiscard]] PartitionMap readMasterBootRecord(const ByteSource& disk);

/// The GPT at the beginning of the disk, or else, if `trustsBackup`, that at its end.
[[nodiscard]] std::optional<PartitionMap> readGuidTable(const ByteSource& disk, bool trustsBackup);

/// The Apple partition map of the disk.
[[nodiscard]] std::optional<PartitionMap> readAppleMap(const ByteSource& disk);

/// Puts `partition` on the `count` blocks from `first` on, or as many as the disk has. False when
/// it has none of them.
[[nodiscard]] bool place(Partition& partition, std::uint64_t diskSize, std::uint32_t blockSize,
                         std::uint64_t first, std::uint64_t count);

} // namespace platform::hdiutil
