// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Udif.h"

#include "tests/unit/support/MemorySource.h"
#include "tests/unit/support/UdifWriter.h"

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::readUdif;
using platform::hdiutil::UdifChunk;
using platform::hdiutil::UdifError;
using platform::hdiutil::UdifImage;
using udif::Kind;

// The image in the bytes; one without sectors and a failure when there is none.
UdifImage imageIn(const std::string& bytes) {
    auto result = readUdif(MemorySource(bytes));
    if (const auto* error = std::get_if<UdifError>(&result)) {
        ADD_FAILURE() << "no image: " << error->reason;
        return {};
    }
    return std::get<UdifImage>(std::move(result));
}

// A disk of three sectors in two raw chunks and an empty one.
std::string letters() {
    return std::string(512, 'a') + std::string(512, 'b') + std::string(512, '\0');
}
constexpr udif::Options rawSectors{Kind::raw, Kind::ignore, 1, 1};

TEST(Udif, SaysWhatItsTrailerSays) {
    std::string bytes = udif::imageOf(letters(), rawSectors);
    udif::put(bytes, bytes.size() - 512 + 88, std::uint32_t{0x0123ABCD});
    const UdifImage image = imageIn(bytes);
    EXPECT_EQ(image.sectorCount, 3U);
    EXPECT_EQ(image.dataForkOffset, 0U);
    EXPECT_EQ(image.checksumType, 2U);
    EXPECT_EQ(image.checksumValue, "0123ABCD");
}

TEST(Udif, SaysAsManyBitsOfAChecksumAsThereAre) {
    std::string bytes = udif::imageOf(letters(), rawSectors);
    const std::size_t trailer = bytes.size() - 512;
    udif::put(bytes, trailer + 84, std::uint32_t{1024});
    EXPECT_EQ(imageIn(bytes).checksumValue.size(), 256U);
    udif::put(bytes, trailer + 84, std::uint32_t{9});
    EXPECT_EQ(imageIn(bytes).checksumValue.size(), 4U);
    udif::put(bytes, trailer + 84, std::uint32_t{0});
    EXPECT_EQ(imageIn(bytes).checksumValue, "");
}

TEST(Udif, PlacesChunksInTheFile) {
    udif::Parts parts = udif::partsOf(letters(), rawSectors);
    parts.dataFork.insert(0, 100, 'x');
    parts.tables.front().dataOffset = 100;
    parts.trailerFirst = true;
    const UdifImage image = imageIn(udif::imageOf(parts));
    EXPECT_EQ(image.dataForkOffset, 512U);
    const std::vector<UdifChunk> expected{
        {Kind::raw, 0, 1, 612, 512}, {Kind::raw, 1, 1, 1124, 512}, {Kind::ignore, 2, 1, 0, 0}};
    EXPECT_EQ(image.chunks, expected);
}

TEST(Udif, KnowsEachKindOfChunk) {
    for (const Kind kind : {Kind::zero, Kind::raw, Kind::ignore, Kind::adc, Kind::zlib, Kind::bzip2,
                            Kind::lzfse, Kind::lzma}) {
        const UdifImage image = imageIn(udif::imageOf(std::string(512, 'a'), {kind}));
        ASSERT_EQ(image.chunks.size(), 1U);
        EXPECT_EQ(image.chunks.front().kind, kind);
    }
}

TEST(Udif, HasSeveralTables) {
    udif::Parts parts = udif::partsOf(udif::sampleDisk(10), {Kind::zlib, Kind::zero, 2, 3});
    ASSERT_EQ(parts.tables.size(), 3U);
    std::swap(parts.tables.front(), parts.tables.back());
    const UdifImage image = imageIn(udif::imageOf(parts));
    std::vector<std::uint64_t> first;
    for (const UdifChunk& chunk : image.chunks) {
        first.push_back(chunk.firstSector);
    }
    EXPECT_EQ(first, (std::vector<std::uint64_t>{0, 2, 4, 6, 8}));
}

TEST(Udif, MayKeepItsTablesInAResourceFork) {
    udif::Parts parts = udif::partsOf(udif::sampleDisk(10), {Kind::zlib, Kind::zero, 2, 3});
    const UdifImage modern = imageIn(udif::imageOf(parts));
    parts.oldStyle = true;
    EXPECT_EQ(imageIn(udif::imageOf(parts)).chunks, modern.chunks);
}

TEST(Udif, SkipsCommentsAndChunksOfNothing) {
    udif::Parts parts = udif::partsOf(letters(), rawSectors);
    auto& chunks = parts.tables.front().chunks;
    chunks.insert(chunks.begin() + 1, {udif::commentType, 77, 88, 1ULL << 60U, 1ULL << 60U});
    chunks.insert(chunks.begin() + 1, {udif::typeOf(Kind::zlib), 1, 0, 0, 0});
    EXPECT_EQ(imageIn(udif::imageOf(parts)).chunks.size(), 3U);
}

TEST(Udif, DoesNotLookForTheDataOfEmptyChunks) {
    udif::Parts parts = udif::partsOf(letters(), rawSectors);
    parts.tables.front().chunks[2].dataOffset = 1ULL << 62U;
    parts.tables.front().chunks[2].dataLength = 1ULL << 62U;
    EXPECT_EQ(imageIn(udif::imageOf(parts)).chunks.back(), (UdifChunk{Kind::ignore, 2, 1, 0, 0}));
}

TEST(Udif, MayBeEmpty) {
    const UdifImage image = imageIn(udif::imageOf(""));
    EXPECT_EQ(image.sectorCount, 0U);
    EXPECT_TRUE(image.chunks.empty());
}

} // namespace
