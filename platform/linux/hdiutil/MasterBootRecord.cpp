// SPDX-License-Identifier: Apache-2.0
// The partition tables of the PC. Of the layout: UEFI Specification 2.10, 5.2.1; of what may stand
// in it: the types as Linux's fdisk lists them, and the boot sectors that FAT (Microsoft's "FAT32
// File System Specification"), exFAT and NTFS put in its place.
#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/Hexadecimal.h"
#include "platform/linux/hdiutil/PartitionSchemes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <deque>
#include <set>
#include <string_view>
#include <utility>

namespace platform::hdiutil {
namespace {

constexpr std::uint32_t blockSize = 512;
constexpr std::size_t entryCount = 4;
constexpr unsigned firstLogicalNumber = 5;
// Linux stops at 256 partitions, and nobody has as many.
constexpr std::size_t maximumTables = 256;

using Sector = std::array<std::byte, blockSize>;
using Bytes = std::span<const std::byte>;

struct Entry {
    unsigned status;
    unsigned type;
    std::uint32_t first; // in blocks, from where depends on the table
    std::uint32_t count;
};

std::optional<Sector> sectorAt(const ByteSource& disk, std::uint64_t block) {
    Sector sector{};
    if (!disk.read(block * blockSize, sector) ||
        littleEndian<std::uint16_t>(sector, 510) != 0xAA55) {
        return std::nullopt;
    }
    return sector;
}

std::array<Entry, entryCount> entriesOf(Bytes sector) {
    std::array<Entry, entryCount> entries{};
    for (std::size_t i = 0; i < entryCount; ++i) {
        const auto bytes = sector.subspan(446 + i * 16, 16);
        entries[i] = {std::to_integer<unsigned>(bytes[0]), std::to_integer<unsigned>(bytes[4]),
                      littleEndian<std::uint32_t>(bytes, 8),
                      littleEndian<std::uint32_t>(bytes, 12)};
    }
    return entries;
}

bool isUsed(const Entry& entry) {
    return entry.type != 0 && entry.count != 0;
}

bool isExtended(const Entry& entry) {
    return entry.type == 0x05 || entry.type == 0x0F || entry.type == 0x85;
}

// Whether the sector begins with the parameters of a FAT volume: a jump, and numbers that fit.
bool isFatBootSector(Bytes sector) {
    const auto byteAt = [sector](std::size_t at) { return std::to_integer<unsigned>(sector[at]); };
    const auto bytesPerSector = littleEndian<std::uint16_t>(sector, 11);
    const bool jumps = (byteAt(0) == 0xEB && byteAt(2) == 0x90) || byteAt(0) == 0xE9;
    return jumps && bytesPerSector >= 512 && bytesPerSector <= 4096 &&
           std::has_single_bit(bytesPerSector) && std::has_single_bit(byteAt(13)) &&
           littleEndian<std::uint16_t>(sector, 14) != 0 && byteAt(16) >= 1 && byteAt(16) <= 2 &&
           (byteAt(21) == 0xF0 || byteAt(21) >= 0xF8);
}

bool isFileSystem(Bytes sector) {
    return hasTextAt(sector, 3, "NTFS    ") || hasTextAt(sector, 3, "EXFAT   ") ||
           isFatBootSector(sector);
}

std::string hexadecimal(unsigned type) {
    std::string text("0x");
    appendHexadecimal(text, type, 2);
    return text;
}

std::string hintFor(unsigned type) {
    static constexpr std::array<std::pair<unsigned, const char*>, 24> hints{{
        {0x01, "DOS_FAT_12"},   {0x04, "DOS_FAT_16_S"}, {0x06, "DOS_FAT_16"},
        {0x07, "Windows_NTFS"}, {0x0B, "DOS_FAT_32"},   {0x0C, "DOS_FAT_32"},
        {0x0E, "DOS_FAT_16"},   {0x11, "DOS_FAT_12"},   {0x14, "DOS_FAT_16_S"},
        {0x16, "DOS_FAT_16"},   {0x1B, "DOS_FAT_32"},   {0x1C, "DOS_FAT_32"},
        {0x1E, "DOS_FAT_16"},   {0x82, "Linux_Swap"},   {0x83, "Linux"},
        {0x8E, "Linux_LVM"},    {0xA5, "FreeBSD"},      {0xA6, "OpenBSD"},
        {0xA8, "Apple_UFS"},    {0xA9, "NetBSD"},       {0xAB, "Apple_Boot"},
        {0xAF, "Apple_HFS"},    {0xEF, "EFI"},          {0xFD, "Linux_RAID"},
    }};
    const auto* const hint = std::ranges::find(hints, type, &decltype(hints)::value_type::first);
    return hint == hints.end() ? hexadecimal(type) : hint->second;
}

// Follows the chain of tables in an extended partition. Each holds a logical partition, counted in
// blocks from the table itself, and where the next one is, counted from the extended partition.
class LogicalPartitions {
public:
    LogicalPartitions(const ByteSource& disk, PartitionMap& map)
        : m_disk(disk)
        , m_map(map) {}

    void addThoseOf(const Entry& extended) {
        std::deque<std::uint64_t> pending{extended.first};
        while (!pending.empty() && m_seen.size() < maximumTables) {
            const std::uint64_t block = pending.front();
            pending.pop_front();
            const auto table = m_seen.insert(block).second ? sectorAt(m_disk, block) : std::nullopt;
            for (const Entry& entry : table ? entriesOf(*table) : std::array<Entry, entryCount>()) {
                if (isExtended(entry) && entry.count != 0) {
                    pending.push_back(std::uint64_t{extended.first} + entry.first);
                } else if (isUsed(entry)) {
                    add(entry, block + entry.first);
                }
            }
        }
    }

private:
    void add(const Entry& entry, std::uint64_t first) {
        Partition partition{m_number, 0, 0, "", hintFor(entry.type), "", false};
        if (place(partition, m_disk.size(), blockSize, first, entry.count)) {
            m_map.partitions.push_back(std::move(partition));
        }
        ++m_number;
    }

    const ByteSource& m_disk;
    PartitionMap& m_map;
    std::set<std::uint64_t> m_seen; // a chain that leads back to itself has no end
    unsigned m_number = firstLogicalNumber;
};

} // namespace

FirstSector firstSectorOf(const ByteSource& disk) {
    const auto sector = sectorAt(disk, 0);
    if (!sector) {
        return FirstSector::other;
    }
    const auto entries = entriesOf(*sector);
    const bool isPlausible = std::ranges::all_of(
        entries, [](const Entry& entry) { return (entry.status & 0x7FU) == 0; });
    if (!isPlausible || isFileSystem(*sector) || std::ranges::none_of(entries, isUsed)) {
        return FirstSector::boot;
    }
    return std::ranges::any_of(entries, [](const Entry& entry) { return entry.type == 0xEE; })
               ? FirstSector::protectiveMbr
               : FirstSector::partitions;
}

PartitionMap readMasterBootRecord(const ByteSource& disk) {
    PartitionMap map{PartitionMap::Scheme::mbr, blockSize, {}};
    const auto sector = sectorAt(disk, 0);
    const auto entries = sector ? entriesOf(*sector) : std::array<Entry, entryCount>();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        Partition partition{static_cast<unsigned>(i + 1), 0,  0,    "",
                            hintFor(entries[i].type),     "", false};
        if (isUsed(entries[i]) && !isExtended(entries[i]) && entries[i].type != 0xEE &&
            place(partition, disk.size(), blockSize, entries[i].first, entries[i].count)) {
            map.partitions.push_back(std::move(partition));
        }
    }
    LogicalPartitions logical(disk, map);
    for (const Entry& entry : entries) {
        if (isExtended(entry) && isUsed(entry)) {
            logical.addThoseOf(entry);
        }
    }
    return map;
}

} // namespace platform::hdiutil
