// SPDX-License-Identifier: Apache-2.0
// Apple partition maps that no tool would write.
#include "platform/linux/hdiutil/PartitionMap.h"
#include "tests/unit/support/MemorySource.h"
#include "tests/unit/support/PartitionPlaces.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::PartitionMap;
using platform::hdiutil::readPartitionMap;
using Scheme = PartitionMap::Scheme;
using namespace std::string_view_literals;

constexpr std::size_t megabyte = 1U << 20U;

MemorySource appleDisk(std::uint32_t namedBlockSize, std::uint32_t blockSize, std::uint32_t count) {
    MemorySource disk(megabyte);
    disk.put(0, "ER");
    disk.putBig(2, namedBlockSize, 2);
    for (std::uint32_t i = 1; i <= 3; ++i) {
        const std::size_t at = std::size_t{i} * blockSize;
        disk.put(at, "PM");
        disk.putBig(at + 4, count, 4);
        disk.putBig(at + 8, 10 * i, 4);
        disk.putBig(at + 12, i, 4);
        disk.put(at + 16, "disk image\0rest"sv);
        disk.put(at + 48, "Apple_HFSX\0rest"sv);
    }
    return disk;
}

TEST(ApplePartitionMap, IsReadInBlocksOfEverySize) {
    for (const std::uint32_t blockSize : {512U, 1024U, 2048U, 4096U}) {
        const PartitionMap map = readPartitionMap(appleDisk(blockSize, blockSize, 2));
        EXPECT_EQ(map.scheme, Scheme::apple);
        EXPECT_EQ(map.blockSize, blockSize);
        ASSERT_EQ(places(map), (std::vector<Place>{{1, 10 * blockSize, blockSize},
                                                   {2, 20 * blockSize, 2 * blockSize}}));
        EXPECT_EQ(map.partitions[1].name, "disk image");
        EXPECT_EQ(map.partitions[1].hint, "Apple_HFSX");
    }
}

TEST(ApplePartitionMap, MayCountInSmallerBlocksThanTheMedium) {
    const PartitionMap map = readPartitionMap(appleDisk(2048, 512, 2));
    EXPECT_EQ(map.scheme, Scheme::apple);
    EXPECT_EQ(map.blockSize, 512U);
    EXPECT_EQ(map.partitions.size(), 2U);
}

TEST(ApplePartitionMap, TextsMayFillTheirFields) {
    MemorySource disk = appleDisk(512, 512, 1);
    disk.put(512 + 16, std::string(32, 'n') + std::string(32, 't') + 'x');
    const PartitionMap map = readPartitionMap(disk);
    ASSERT_EQ(map.partitions.size(), 1U);
    EXPECT_EQ(map.partitions[0].name, std::string(32, 'n'));
    EXPECT_EQ(map.partitions[0].hint, std::string(32, 't'));
}

TEST(ApplePartitionMap, NeedsASaneBlockSizeAndAnEntry) {
    EXPECT_EQ(readPartitionMap(appleDisk(0, 1024, 3)).scheme, Scheme::none);
    EXPECT_EQ(readPartitionMap(appleDisk(1, 1024, 3)).scheme, Scheme::none);
    EXPECT_EQ(readPartitionMap(appleDisk(65535, 1024, 3)).scheme, Scheme::none);
    MemorySource disk(megabyte);
    disk.put(0, "ER\2\0"sv);
    EXPECT_EQ(readPartitionMap(disk).scheme, Scheme::none);
}

TEST(ApplePartitionMap, EndsWithItsEntries) {
    EXPECT_EQ(readPartitionMap(appleDisk(512, 512, 0xFFFFFFFF)).partitions.size(), 3U);
    EXPECT_EQ(readPartitionMap(appleDisk(512, 512, 0)).partitions.size(), 1U);
    MemorySource full = appleDisk(512, 512, 0xFFFFFFFF);
    for (std::uint32_t i = 1; i < 1000; ++i) {
        full.put(std::size_t{i} * 512, "PM");
        full.putBig(std::size_t{i} * 512 + 12, 1, 4);
    }
    EXPECT_EQ(readPartitionMap(full).partitions.size(), 256U);
}

TEST(ApplePartitionMap, PartitionsEndWithTheDisk) {
    MemorySource disk = appleDisk(512, 512, 3);
    disk.putBig(512 + 12, 0xFFFFFFFF, 4);
    disk.putBig(1024 + 8, 0xFFFFFFFF, 4);
    disk.putBig(1536 + 12, 0, 4);
    EXPECT_EQ(places(readPartitionMap(disk)), (std::vector<Place>{{1, 5120, megabyte - 5120}}));
}

} // namespace
