// SPDX-License-Identifier: Apache-2.0
// The Apple partition map: "Inside Macintosh: Devices", chapter "SCSI Manager", "The Structure of
// Block Devices".
#include "platform/linux/ByteOrder.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/hdiutil/PartitionSchemes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace platform::hdiutil {
namespace {

constexpr std::size_t recordSize = 512;
constexpr std::uint16_t diskSignature = 0x4552;      // "ER"
constexpr std::uint16_t partitionSignature = 0x504D; // "PM"
constexpr std::uint32_t maximumPartitions = 256;     // the usual map has room for 63

using Record = std::array<std::byte, recordSize>;

std::optional<Record> recordAt(const ByteSource& disk, std::uint64_t offset,
                               std::uint16_t signature) {
    Record record{};
    if (!disk.read(offset, record) || bigEndian<std::uint16_t>(record, 0) != signature) {
        return std::nullopt;
    }
    return record;
}

// The bytes between the entries of the map, which is also the unit it counts in. Some discs name
// the sectors of the medium and keep a map in blocks of 512 bytes nevertheless.
std::optional<std::uint32_t> blockSizeOf(const ByteSource& disk) {
    const auto driver = recordAt(disk, 0, diskSignature);
    if (!driver) {
        return std::nullopt;
    }
    const std::uint32_t named = bigEndian<std::uint16_t>(*driver, 2);
    for (const std::uint32_t size : {named, std::uint32_t{recordSize}}) {
        if ((size == 512 || size == 1024 || size == 2048 || size == 4096) &&
            recordAt(disk, size, partitionSignature)) {
            return size;
        }
    }
    return std::nullopt;
}

// A field of 32 bytes, up to the first NUL.
std::string textAt(const Record& record, std::size_t offset) {
    std::string text;
    for (const std::byte byte : std::span(record).subspan(offset, 32)) {
        if (byte == std::byte{0}) {
            break;
        }
        text.push_back(std::to_integer<char>(byte));
    }
    return replacingInvalidUTF8(text);
}

} // namespace

std::optional<PartitionMap> readAppleMap(const ByteSource& disk) {
    const auto blockSize = blockSizeOf(disk);
    if (!blockSize) {
        return std::nullopt;
    }
    PartitionMap map{PartitionMap::Scheme::apple, *blockSize, {}};
    std::uint32_t count = 1;
    for (std::uint32_t number = 1; number <= count; ++number) {
        const auto record = recordAt(disk, std::uint64_t{number} * *blockSize, partitionSignature);
        if (!record) {
            break;
        }
        if (number == 1) { // every entry has the count; that of the first is believed
            count = std::min(bigEndian<std::uint32_t>(*record, 4), maximumPartitions);
        }
        Partition partition{number, 0, 0, textAt(*record, 16), textAt(*record, 48), "", false};
        if (place(partition, disk.size(), *blockSize, bigEndian<std::uint32_t>(*record, 8),
                  bigEndian<std::uint32_t>(*record, 12))) {
            map.partitions.push_back(std::move(partition));
        }
    }
    return map;
}

} // namespace platform::hdiutil
