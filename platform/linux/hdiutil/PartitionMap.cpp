// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/PartitionMap.h"

#include "platform/linux/hdiutil/PartitionSchemes.h"

#include <optional>

namespace platform::hdiutil {

bool place(Partition& partition, std::uint64_t diskSize, std::uint32_t blockSize,
           std::uint64_t first, std::uint64_t count) {
    if (count == 0 || first >= diskSize / blockSize) {
        return false;
    }
    partition.firstByte = first * blockSize;
    const std::uint64_t room = diskSize - partition.firstByte;
    partition.byteLength = count > room / blockSize ? room : count * blockSize;
    return true;
}

PartitionMap readPartitionMap(const ByteSource& disk) {
    const FirstSector first = firstSectorOf(disk);
    const bool isProtected = first == FirstSector::protectiveMbr;
    // A GPT that a newer MBR or file system was written over is left behind, not meant.
    if (isProtected || first == FirstSector::other) {
        if (auto map = readGuidTable(disk, isProtected)) {
            return *map;
        }
    }
    if (first == FirstSector::partitions || isProtected) {
        PartitionMap map = readMasterBootRecord(disk);
        if (!map.partitions.empty()) {
            return map;
        }
    }
    return readAppleMap(disk).value_or(PartitionMap());
}

} // namespace platform::hdiutil
