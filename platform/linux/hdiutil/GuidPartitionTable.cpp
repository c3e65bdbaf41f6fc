// SPDX-License-Identifier: Apache-2.0
// The GUID partition table: UEFI Specification 2.10, 5.3. The types are those of its table 5.7, of
// Apple's "Secrets of the GPT" (TN2166), and of the Discoverable Partitions Specification.
#include "platform/linux/ByteOrder.h"
#include "platform/linux/Hexadecimal.h"
#include "platform/linux/Utf16.h"
#include "platform/linux/hdiutil/PartitionSchemes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>
#include <utility>

namespace platform::hdiutil {
namespace {

constexpr std::array<std::uint32_t, 3> blockSizes{512, 2048, 4096};
constexpr std::size_t fixedHeaderSize = 92;
constexpr std::uint32_t maximumEntries = 1024; // everybody writes 128
constexpr std::uint32_t minimumEntrySize = 128;
constexpr std::uint32_t maximumEntrySize = 4096;
constexpr std::size_t guidSize = 16;

using Bytes = std::span<const std::byte>;

struct Header {
    std::uint64_t firstEntryBlock;
    std::uint32_t entryCount;
    std::uint32_t entrySize;
    std::uint32_t entriesChecksum;
};

constexpr std::array<std::uint32_t, 256> crcTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value >> 1U) ^ ((value & 1U) != 0 ? 0xEDB88320U : 0U);
        }
        table[i] = value;
    }
    return table;
}

// The CRC-32 of ISO 3309, with which the table guards itself.
std::uint32_t crc32(Bytes bytes) {
    static constexpr auto table = crcTable();
    std::uint32_t value = 0xFFFFFFFFU;
    for (const std::byte byte : bytes) {
        value = (value >> 8U) ^ table[(value ^ std::to_integer<std::uint32_t>(byte)) & 0xFFU];
    }
    return ~value;
}

// Whether the header's own checksum, which is taken with zeros in its place, is right.
bool isIntact(std::vector<std::byte>& block) {
    const auto headerSize = littleEndian<std::uint32_t>(block, 12);
    if (headerSize < fixedHeaderSize || headerSize > block.size()) {
        return false;
    }
    const auto checksum = littleEndian<std::uint32_t>(block, 16);
    std::fill_n(block.begin() + 16, 4, std::byte{0});
    return crc32(Bytes(block).first(headerSize)) == checksum;
}

// The header in block `number`, if there is one that was written for this place.
std::optional<Header> headerAt(const ByteSource& disk, std::uint32_t blockSize,
                               std::uint64_t number) {
    constexpr std::uint64_t signature = 0x5452415020494645; // "EFI PART"
    std::vector<std::byte> block(blockSize);
    if (!disk.read(number * blockSize, block) ||
        littleEndian<std::uint64_t>(block, 0) != signature || !isIntact(block) ||
        littleEndian<std::uint64_t>(block, 24) != number) {
        return std::nullopt;
    }
    const Header header{
        littleEndian<std::uint64_t>(block, 72), littleEndian<std::uint32_t>(block, 80),
        littleEndian<std::uint32_t>(block, 84), littleEndian<std::uint32_t>(block, 88)};
    const bool isSane = header.entryCount <= maximumEntries &&
                        header.entrySize >= minimumEntrySize &&
                        header.entrySize <= maximumEntrySize && header.entrySize % 8 == 0 &&
                        header.firstEntryBlock < disk.size() / blockSize;
    return isSane ? std::optional(header) : std::nullopt;
}

// The bytes of all entries. The header's limits keep them below 4 MiB.
std::optional<std::vector<std::byte>> entriesOf(const ByteSource& disk, std::uint32_t blockSize,
                                                const Header& header) {
    const std::uint64_t start = header.firstEntryBlock * blockSize;
    const std::uint64_t length = std::uint64_t{header.entryCount} * header.entrySize;
    if (length > disk.size() - start) {
        return std::nullopt;
    }
    std::vector<std::byte> entries(length);
    const bool isWhole = disk.read(start, entries) && crc32(entries) == header.entriesChecksum;
    return isWhole ? std::optional(std::move(entries)) : std::nullopt;
}

// The text of a GUID, whose first three numbers have the least significant byte first.
std::string guidText(Bytes guid) {
    std::string text;
    appendHexadecimal(text, littleEndian<std::uint32_t>(guid, 0), 8);
    appendHexadecimal(text.append(1, '-'), littleEndian<std::uint16_t>(guid, 4), 4);
    appendHexadecimal(text.append(1, '-'), littleEndian<std::uint16_t>(guid, 6), 4);
    appendHexadecimal(text.append(1, '-'), bigEndian<std::uint16_t>(guid, 8), 4);
    text.push_back('-');
    for (const std::byte byte : guid.subspan(10, 6)) {
        appendHexadecimal(text, std::to_integer<unsigned>(byte), 2);
    }
    return text;
}

std::string hintFor(const std::string& type) {
    static constexpr std::array<std::pair<std::string_view, const char*>, 17> hints{{
        {"48465300-0000-11AA-AA11-00306543ECAC", "Apple_HFS"},
        {"7C3457EF-0000-11AA-AA11-00306543ECAC", "Apple_APFS"},
        {"426F6F74-0000-11AA-AA11-00306543ECAC", "Apple_Boot"},
        {"53746F72-6167-11AA-AA11-00306543ECAC", "Apple_CoreStorage"},
        {"52414944-0000-11AA-AA11-00306543ECAC", "Apple_RAID"},
        {"52414944-5F4F-11AA-AA11-00306543ECAC", "Apple_RAID_Offline"},
        {"4C616265-6C00-11AA-AA11-00306543ECAC", "Apple_Label"},
        {"55465300-0000-11AA-AA11-00306543ECAC", "Apple_UFS"},
        {"C12A7328-F81F-11D2-BA4B-00A0C93EC93B", "EFI"},
        {"21686148-6449-6E6F-744E-656564454649", "BIOS Boot"},
        {"EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", "Microsoft Basic Data"},
        {"E3C9E316-0B5C-4DB8-817D-F92DF00215AE", "Microsoft Reserved"},
        {"DE94BBA4-06D1-4D40-A16A-BFD50179D6AC", "Windows Recovery"},
        {"0FC63DAF-8483-4772-8E79-3D69D8477DE4", "Linux"},
        {"0657FD6D-A4AB-43C4-84E5-0933C84B4F4F", "Linux Swap"},
        {"E6D6D379-F507-44C2-A23C-238F2A3DF928", "Linux LVM"},
        {"A19D880F-05FC-4D3B-A006-743F0F84911E", "Linux RAID"},
    }};
    const auto* const hint = std::ranges::find(hints, type, &decltype(hints)::value_type::first);
    return hint == hints.end() ? type : hint->second;
}

// The partition of an entry; nullopt for an entry that is free, or makes no sense.
std::optional<Partition> partitionOf(Bytes entry, unsigned number, std::uint64_t diskSize,
                                     std::uint32_t blockSize) {
    const Bytes type = entry.first(guidSize);
    if (std::ranges::all_of(type, [](std::byte byte) { return byte == std::byte{0}; })) {
        return std::nullopt;
    }
    const auto first = littleEndian<std::uint64_t>(entry, 32);
    const auto last = std::min(littleEndian<std::uint64_t>(entry, 40), diskSize / blockSize);
    Partition partition{number,
                        0,
                        0,
                        utf8FromUtf16(entry.subspan(56, 72), std::endian::little),
                        hintFor(guidText(type)),
                        guidText(entry.subspan(guidSize, guidSize)),
                        false};
    if (last < first || !place(partition, diskSize, blockSize, first, last - first + 1)) {
        return std::nullopt;
    }
    return partition;
}

std::optional<PartitionMap> tableAt(const ByteSource& disk, std::uint32_t blockSize,
                                    std::uint64_t number) {
    const auto header = headerAt(disk, blockSize, number);
    const auto entries = header ? entriesOf(disk, blockSize, *header) : std::nullopt;
    if (!entries) {
        return std::nullopt;
    }
    PartitionMap map{PartitionMap::Scheme::gpt, blockSize, {}};
    for (std::uint32_t i = 0; i < header->entryCount; ++i) {
        const std::size_t start = std::size_t{i} * header->entrySize;
        const Bytes entry = Bytes(*entries).subspan(start, header->entrySize);
        if (auto partition = partitionOf(entry, i + 1, disk.size(), blockSize)) {
            map.partitions.push_back(std::move(*partition));
        }
    }
    return map;
}

} // namespace

std::optional<PartitionMap> readGuidTable(const ByteSource& disk, bool trustsBackup) {
    for (const std::uint32_t blockSize : blockSizes) {
        if (auto map = tableAt(disk, blockSize, 1)) {
            return map;
        }
    }
    for (const std::uint32_t blockSize : blockSizes) {
        const std::uint64_t blocks = disk.size() / blockSize;
        if (auto map =
                trustsBackup && blocks > 1 ? tableAt(disk, blockSize, blocks - 1) : std::nullopt) {
            return map;
        }
    }
    return std::nullopt;
}

} // namespace platform::hdiutil
