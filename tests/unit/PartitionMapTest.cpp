// SPDX-License-Identifier: Apache-2.0
// Partition maps that no tool would write.
#include "platform/linux/hdiutil/PartitionMap.h"

#include "tests/unit/support/MemorySource.h"
#include "tests/unit/support/PartitionPlaces.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::PartitionMap;
using platform::hdiutil::readPartitionMap;
using Scheme = PartitionMap::Scheme;
using namespace std::string_view_literals;

constexpr std::size_t megabyte = 1U << 20U;

// MBR

void putEntry(MemorySource& disk, std::size_t table, std::size_t index, unsigned type,
              std::uint32_t first, std::uint32_t count) {
    const std::size_t at = table * 512 + 446 + index * 16;
    disk.putLittle(at + 4, type, 1);
    disk.putLittle(at + 8, first, 4);
    disk.putLittle(at + 12, count, 4);
    disk.put(table * 512 + 510, "\x55\xAA");
}

TEST(PartitionMap, IsNoneOnBlankAndTinyDisks) {
    for (const std::size_t size : {0U, 1U, 511U, 512U, 513U, 4096U, 65536U}) {
        const PartitionMap map = readPartitionMap(MemorySource(size));
        EXPECT_EQ(map.scheme, Scheme::none) << size;
        EXPECT_TRUE(map.partitions.empty()) << size;
    }
}

TEST(MasterBootRecord, PartitionsEndWithTheDisk) {
    MemorySource disk(megabyte);
    putEntry(disk, 0, 0, 0x83, 1, 10);
    putEntry(disk, 0, 1, 0x83, 2000, 0xFFFFFFFF);
    putEntry(disk, 0, 2, 0x83, 2048, 1);
    putEntry(disk, 0, 3, 0x83, 0xFFFFFFFF, 0xFFFFFFFF);
    const PartitionMap map = readPartitionMap(disk);
    EXPECT_EQ(map.scheme, Scheme::mbr);
    EXPECT_EQ(places(map), (std::vector<Place>{{1, 512, 5120}, {2, 1024000, 24576}}));
}

TEST(MasterBootRecord, NeedsPlausibleEntries) {
    MemorySource disk(megabyte);
    putEntry(disk, 0, 0, 0x83, 1, 10);
    ASSERT_EQ(readPartitionMap(disk).scheme, Scheme::mbr);
    disk.putLittle(446 + 48, 0x41, 1);
    EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none);

    MemorySource withoutPartitions(megabyte);
    putEntry(withoutPartitions, 0, 0, 0, 1, 10);
    putEntry(withoutPartitions, 0, 1, 0x83, 1, 0);
    EXPECT_EQ(readPartitionMap(withoutPartitions).scheme, Scheme::none);

    MemorySource beyond(megabyte);
    putEntry(beyond, 0, 0, 0x83, 5000, 10);
    EXPECT_EQ(readPartitionMap(beyond).scheme, Scheme::none);
}

TEST(MasterBootRecord, IsNotSeenInBootSectorsOfFileSystems) {
    const auto schemeOf = [](std::size_t offset, std::string_view text) {
        MemorySource disk(megabyte);
        putEntry(disk, 0, 0, 0x83, 1, 10);
        disk.put(offset, text);
        return readPartitionMap(disk).scheme;
    };
    EXPECT_EQ(schemeOf(3, "NTFS    "), Scheme::none);
    EXPECT_EQ(schemeOf(3, "EXFAT   "), Scheme::none);
    const auto fat = "\xEB\x3C\x90mkfs.fat\0\2\4\1\0\2\0\2\0\x08\xF8"sv;
    EXPECT_EQ(schemeOf(0, fat), Scheme::none);
    // A loader that jumps, but has no parameters of a volume where FAT has them.
    EXPECT_EQ(schemeOf(0, fat.substr(0, 11)), Scheme::mbr);
    // Each of these numbers another one.
    const auto withByte = [&](std::size_t offset, unsigned value) {
        std::string changed(fat);
        changed.at(offset) = static_cast<char>(value);
        return schemeOf(0, changed);
    };
    for (const auto& [offset, value] : {std::pair(0U, 0xE9U),
                                        {12U, 0x10U},
                                        {13U, 0x80U},
                                        {14U, 32U},
                                        {16U, 1U},
                                        {21U, 0xF0U},
                                        {21U, 0xFFU}}) {
        EXPECT_EQ(withByte(offset, value), Scheme::none) << offset << ' ' << value;
    }
    for (const auto& [offset, value] : {std::pair(2U, 0U),
                                        {0U, 0xFAU},
                                        {11U, 1U},
                                        {12U, 1U},
                                        {12U, 3U},
                                        {12U, 0x20U},
                                        {13U, 0U},
                                        {13U, 3U},
                                        {14U, 0U},
                                        {16U, 0U},
                                        {16U, 3U},
                                        {21U, 0xF7U}}) {
        EXPECT_EQ(withByte(offset, value), Scheme::mbr) << offset << ' ' << value;
    }
}

TEST(MasterBootRecord, HasExtendedPartitionsOfThreeTypes) {
    for (const unsigned type : {0x05U, 0x0FU, 0x85U}) {
        MemorySource disk(megabyte);
        putEntry(disk, 0, 0, type, 100, 1000);
        putEntry(disk, 100, 0, 0x83, 1, 10);
        putEntry(disk, 100, 1, type, 50, 100);
        putEntry(disk, 150, 0, 0x83, 1, 10);
        EXPECT_EQ(places(readPartitionMap(disk)),
                  (std::vector<Place>{{5, 101 * 512, 5120}, {6, 151 * 512, 5120}}))
            << type;
    }
}

TEST(MasterBootRecord, ExtendedPartitionsOfNoLengthLeadNowhere) {
    MemorySource disk(megabyte);
    putEntry(disk, 0, 0, 0x05, 100, 1000);
    putEntry(disk, 0, 1, 0x05, 200, 0);
    putEntry(disk, 100, 0, 0x83, 1, 10);
    putEntry(disk, 100, 1, 0x05, 50, 0);
    putEntry(disk, 150, 0, 0x83, 1, 10);
    putEntry(disk, 200, 0, 0x83, 1, 10);
    EXPECT_EQ(places(readPartitionMap(disk)), (std::vector<Place>{{5, 101 * 512, 5120}}));
}

TEST(MasterBootRecord, ChainsThatLeadBackEnd) {
    MemorySource disk(megabyte);
    putEntry(disk, 0, 0, 0x05, 100, 1000);
    putEntry(disk, 100, 0, 0x83, 1, 10);
    putEntry(disk, 100, 1, 0x05, 50, 100);
    putEntry(disk, 150, 0, 0x07, 1, 10);
    putEntry(disk, 150, 1, 0x05, 0, 100);
    const PartitionMap map = readPartitionMap(disk);
    EXPECT_EQ(places(map), (std::vector<Place>{{5, 101 * 512, 5120}, {6, 151 * 512, 5120}}));
}

TEST(MasterBootRecord, LongAndWideChainsEnd) {
    MemorySource disk(4 * megabyte);
    putEntry(disk, 0, 0, 0x0F, 1, 8000);
    for (std::uint32_t table = 1; table < 4000; ++table) {
        putEntry(disk, table, 0, 0x83, 1, 1);
        putEntry(disk, table, 1, 0x05, table, 1);
        putEntry(disk, table, 2, 0x05, table * 2, 1);
        putEntry(disk, table, 3, 0x05, table * 3, 1);
    }
    const PartitionMap map = readPartitionMap(disk);
    EXPECT_EQ(map.scheme, Scheme::mbr);
    EXPECT_EQ(map.partitions.size(), 256U);
}

TEST(MasterBootRecord, ChainsThatLeadBeyondTheEndEnd) {
    MemorySource disk(megabyte);
    putEntry(disk, 0, 0, 0x05, 100, 1000);
    putEntry(disk, 100, 0, 0x83, 0xFFFFFFFF, 10);
    putEntry(disk, 100, 1, 0x05, 0xFFFFFFFF, 100);
    putEntry(disk, 0, 1, 0x83, 10, 10);
    EXPECT_EQ(places(readPartitionMap(disk)), (std::vector<Place>{{2, 5120, 5120}}));
}

// GPT

constexpr std::size_t entriesAt = 3; // the block; blocks 1 and 2 have the headers

std::uint32_t crc(const MemorySource& disk, std::size_t offset, std::size_t length) {
    std::vector<std::byte> bytes(length);
    EXPECT_TRUE(disk.read(offset, bytes));
    std::uint32_t value = ~0U;
    for (const std::byte byte : bytes) {
        value ^= std::to_integer<std::uint32_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1U) != 0 ? value >> 1U ^ 0xEDB88320U : value >> 1U;
        }
    }
    return ~value;
}

struct Gpt {
    std::uint32_t blockSize = 512;
    std::uint32_t entryCount = 8;
    std::uint32_t entrySize = 128;
    std::uint64_t entriesBlock = entriesAt;
    std::uint32_t headerSize = 92;
    std::uint64_t block = 1;
};

// Partition `index` of the table, which sealGpt() makes valid.
void putGptEntry(MemorySource& disk, const Gpt& gpt, std::size_t index, std::uint64_t first,
                 std::uint64_t last) {
    const std::size_t at = entriesAt * gpt.blockSize + index * gpt.entrySize;
    disk.put(at, "\xAF\x3D\xC6\x0F\x83\x84\x72\x47\x8E\x79\x3D\x69\xD8\x47\x7D\xE4"sv);
    disk.put(at + 16, "\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF"sv);
    disk.putLittle(at + 32, first, 8);
    disk.putLittle(at + 40, last, 8);
    disk.put(at + 56, "N\0\x3D\xD8o\0"sv);
}

void sealGpt(MemorySource& disk, const Gpt& gpt) {
    const std::size_t at = gpt.block * gpt.blockSize;
    disk.put(at, "EFI PART\0\0\1\0"sv);
    disk.putLittle(at + 12, gpt.headerSize, 4);
    disk.putLittle(at + 16, 0, 4);
    disk.putLittle(at + 24, gpt.block, 8);
    disk.putLittle(at + 72, gpt.entriesBlock, 8);
    disk.putLittle(at + 80, gpt.entryCount, 4);
    disk.putLittle(at + 84, gpt.entrySize, 4);
    const std::size_t length = std::size_t{gpt.entryCount} * gpt.entrySize;
    const std::size_t start = gpt.entriesBlock * gpt.blockSize;
    const bool isInside = start < disk.size() && length <= disk.size() - start;
    disk.putLittle(at + 88, isInside ? crc(disk, start, length) : 0, 4);
    disk.putLittle(at + 16, crc(disk, at, std::min<std::size_t>(gpt.headerSize, gpt.blockSize)), 4);
}

TEST(GuidPartitionTable, IsReadInSectorsOfEverySize) {
    for (const std::uint32_t blockSize : {512U, 2048U, 4096U}) {
        MemorySource disk(megabyte);
        const Gpt gpt{.blockSize = blockSize};
        putGptEntry(disk, gpt, 0, 10, 19);
        sealGpt(disk, gpt);
        const PartitionMap map = readPartitionMap(disk);
        EXPECT_EQ(map.scheme, Scheme::gpt);
        EXPECT_EQ(map.blockSize, blockSize);
        ASSERT_EQ(places(map),
                  (std::vector<Place>{{1, std::uint64_t{10} * blockSize, 10 * blockSize}}));
        EXPECT_EQ(map.partitions[0].uuid, "00112233-4455-6677-8899-AABBCCDDEEFF");
        EXPECT_EQ(map.partitions[0].hint, "Linux");
        EXPECT_EQ(map.partitions[0].name, "N\uFFFDo");
        EXPECT_FALSE(map.partitions[0].isSynthesized);
    }
}

TEST(GuidPartitionTable, PartitionsEndWithTheDisk) {
    MemorySource disk(megabyte);
    const Gpt gpt{};
    putGptEntry(disk, gpt, 0, 2000, UINT64_MAX);
    putGptEntry(disk, gpt, 1, 0, UINT64_MAX);
    putGptEntry(disk, gpt, 2, 20, 19);
    putGptEntry(disk, gpt, 3, 2048, 2050);
    putGptEntry(disk, gpt, 4, UINT64_MAX, UINT64_MAX);
    putGptEntry(disk, gpt, 5, UINT64_MAX / 512, UINT64_MAX);
    putGptEntry(disk, gpt, 6, 2047, 2047);
    sealGpt(disk, gpt);
    EXPECT_EQ(places(readPartitionMap(disk)),
              (std::vector<Place>{{1, 1024000, 24576}, {2, 0, megabyte}, {7, 2047 * 512, 512}}));
}

TEST(GuidPartitionTable, NeedsBothChecksums) {
    MemorySource disk(megabyte);
    putGptEntry(disk, {}, 0, 10, 19);
    sealGpt(disk, {});
    ASSERT_EQ(readPartitionMap(disk).scheme, Scheme::gpt);
    disk.putLittle(512 + 40, 1, 1); // part of the header, of no other importance
    EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none);
    sealGpt(disk, {});
    ASSERT_EQ(readPartitionMap(disk).scheme, Scheme::gpt);
    disk.putLittle(entriesAt * 512 + 32, 11, 1);
    EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none);
}

TEST(GuidPartitionTable, NeedsToBeWrittenForItsPlace) {
    MemorySource disk(megabyte);
    sealGpt(disk, {});
    disk.putLittle(512 + 24, 2, 8);
    disk.putLittle(512 + 16, 0, 4);
    disk.putLittle(512 + 16, crc(disk, 512, 92), 4);
    EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none);
    disk.putLittle(512 + 24, 1, 8);
    disk.putLittle(512 + 16, 0, 4);
    disk.putLittle(512 + 16, crc(disk, 512, 92), 4);
    EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::gpt);
}

TEST(GuidPartitionTable, IsNoneWhereItCannotBeRead) {
    MemorySource disk(megabyte);
    sealGpt(disk, {});
    ASSERT_EQ(readPartitionMap(disk).scheme, Scheme::gpt);
    for (const std::size_t block : {std::size_t{1}, entriesAt}) {
        disk.breakAt(block * 512);
        EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none) << block;
    }
}

TEST(GuidPartitionTable, IsNoneWhereThereIsNoRoomForIt) {
    for (const std::size_t size : {512U, 1023U, 1024U, 2048U, 4096U, 4097U}) {
        MemorySource disk(size);
        putEntry(disk, 0, 0, 0xEE, 1, 0xFFFFFFFF);
        EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none) << size;
    }
}

TEST(GuidPartitionTable, NeedsSaneNumbers) {
    const auto schemeOf = [](const Gpt& gpt) {
        MemorySource disk(8 * megabyte);
        sealGpt(disk, gpt);
        return readPartitionMap(disk).scheme;
    };
    EXPECT_EQ(schemeOf({.entryCount = 1024, .entrySize = 4096}), Scheme::gpt);
    EXPECT_EQ(schemeOf({.entryCount = 0}), Scheme::gpt);
    EXPECT_EQ(schemeOf({.entryCount = 1025}), Scheme::none);
    EXPECT_EQ(schemeOf({.entryCount = 0xFFFFFFFF, .entrySize = 0xFFFFFFF8}), Scheme::none);
    EXPECT_EQ(schemeOf({.entrySize = 120}), Scheme::none);
    EXPECT_EQ(schemeOf({.entrySize = 0}), Scheme::none);
    EXPECT_EQ(schemeOf({.entrySize = 132}), Scheme::none);
    EXPECT_EQ(schemeOf({.entrySize = 4104}), Scheme::none);
    EXPECT_EQ(schemeOf({.headerSize = 91}), Scheme::none);
    EXPECT_EQ(schemeOf({.headerSize = 512}), Scheme::gpt);
    EXPECT_EQ(schemeOf({.headerSize = 513}), Scheme::none);
    EXPECT_EQ(schemeOf({.entriesBlock = 16383}), Scheme::none);
    EXPECT_EQ(schemeOf({.entriesBlock = UINT64_MAX}), Scheme::none);
    EXPECT_EQ(schemeOf({.entriesBlock = UINT64_MAX / 512}), Scheme::none);
}

TEST(GuidPartitionTable, AtTheEndCountsOnlyForAnMbrThatProtectsIt) {
    MemorySource disk(megabyte);
    const Gpt gpt{.block = 2047};
    putGptEntry(disk, gpt, 0, 10, 19);
    sealGpt(disk, gpt);
    EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none);
    putEntry(disk, 0, 0, 0xEE, 1, 2047);
    const PartitionMap map = readPartitionMap(disk);
    EXPECT_EQ(map.scheme, Scheme::gpt);
    EXPECT_EQ(places(map), (std::vector<Place>{{1, 5120, 5120}}));
}

TEST(GuidPartitionTable, ThatIsLostLeavesTheOthersOfItsMbr) {
    MemorySource disk(megabyte);
    putEntry(disk, 0, 0, 0xEE, 1, 99);
    EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none);
    putEntry(disk, 0, 1, 0x0B, 100, 10);
    const PartitionMap map = readPartitionMap(disk);
    EXPECT_EQ(map.scheme, Scheme::mbr);
    EXPECT_EQ(places(map), (std::vector<Place>{{2, 51200, 5120}}));
}

} // namespace
