// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Udif.h"
#include "tests/unit/support/MemorySource.h"
#include "tests/unit/support/UdifWriter.h"

#include <functional>
#include <limits>

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::readUdif;
using platform::hdiutil::UdifError;
using platform::hdiutil::UdifImage;
using udif::Kind;

constexpr auto huge = std::numeric_limits<std::uint64_t>::max();

// "image", "not UDIF", "damaged: why" or "unsupported: why".
std::string outcome(const std::string& bytes) {
    const auto result = readUdif(MemorySource(bytes));
    const auto* error = std::get_if<UdifError>(&result);
    if (error == nullptr) {
        return "image";
    }
    switch (error->kind) {
    case UdifError::Kind::notUdif: return "not UDIF" + error->reason;
    case UdifError::Kind::damaged: return "damaged: " + error->reason;
    case UdifError::Kind::unsupported: return "unsupported: " + error->reason;
    }
    return "?";
}

udif::Parts goodParts(Kind kind = Kind::zlib) {
    return udif::partsOf(udif::sampleDisk(16), {kind, Kind::zero, 4, 2});
}

// The outcome for an image whose parts were changed before it was put together.
std::string withParts(const std::function<void(udif::Parts&)>& change) {
    udif::Parts parts = goodParts();
    change(parts);
    return outcome(udif::imageOf(parts));
}

std::string withChunk(const std::function<void(udif::Chunk&)>& change) {
    return withParts([&](udif::Parts& parts) { change(parts.tables[1].chunks[0]); });
}

// The outcome for an image with another number in its trailer.
template <class Number>
std::string withTrailer(std::size_t offset, Number number, bool oldStyle = false) {
    udif::Parts parts = goodParts();
    parts.oldStyle = oldStyle;
    std::string bytes = udif::imageOf(parts);
    udif::put(bytes, bytes.size() - udif::trailerSize + offset, number);
    return outcome(bytes);
}

constexpr const char* listBeyond = "damaged: the list of block tables lies beyond the end of the "
                                   "file";
constexpr const char* forkBeyond = "damaged: the data fork lies beyond the end of the file";
constexpr const char* dataBeyond = "damaged: the data of a chunk lies beyond the end of the file";
constexpr const char* beyondTable = "damaged: a chunk lies beyond the end of its table";
constexpr const char* beyondDisk = "damaged: a chunk lies beyond the end of the disk";
constexpr const char* malformed = "damaged: the list of block tables is malformed";

TEST(UdifDamage, OtherFilesAreNoImages) {
    EXPECT_EQ(outcome(""), "not UDIF");
    EXPECT_EQ(outcome("koly"), "not UDIF");
    EXPECT_EQ(outcome(std::string(511, 'k')), "not UDIF");
    EXPECT_EQ(outcome(std::string(4096, '\0')), "not UDIF");
    EXPECT_EQ(outcome(udif::imageOf(goodParts())), "image");
}

TEST(UdifDamage, CutFilesAreNoImages) {
    for (const bool oldStyle : {false, true}) {
        udif::Parts parts = goodParts();
        parts.oldStyle = oldStyle;
        const std::string bytes = udif::imageOf(parts);
        for (std::size_t length = 0; length < bytes.size(); length += 100) {
            EXPECT_EQ(outcome(bytes.substr(0, length)), "not UDIF") << length;
        }
    }
}

TEST(UdifDamage, FilesThatAreCutBehindTheirTrailerAreDamaged) {
    for (const bool oldStyle : {false, true}) {
        udif::Parts parts = goodParts();
        parts.oldStyle = oldStyle;
        parts.trailerFirst = true;
        const std::string bytes = udif::imageOf(parts);
        EXPECT_EQ(outcome(bytes), "image");
        for (std::size_t length = 512; length < bytes.size(); length += 100) {
            EXPECT_EQ(outcome(bytes.substr(0, length)).substr(0, 8), "damaged:") << length;
        }
    }
}

TEST(UdifDamage, FilesThatLackTheirStartAreDamaged) {
    const std::string bytes = udif::imageOf(goodParts());
    for (std::size_t length = 512; length < bytes.size(); length += 100) {
        EXPECT_EQ(outcome(bytes.substr(bytes.size() - length)).substr(0, 8), "damaged:") << length;
    }
}

TEST(UdifDamage, TrailersOfOtherKindsAreRefused) {
    EXPECT_EQ(withTrailer(4, std::uint32_t{5}),
              "unsupported: version 5 of the format is not known");
    EXPECT_EQ(withTrailer(8, std::uint32_t{511}), "damaged: the trailer has a wrong size");
    EXPECT_EQ(withTrailer(56, std::uint32_t{2}),
              "unsupported: the image consists of several files");
    EXPECT_EQ(withTrailer(60, std::uint32_t{2}),
              "unsupported: the image consists of several files");
    EXPECT_EQ(withTrailer(60, std::uint32_t{0}), "image");
    EXPECT_EQ(withTrailer(84, std::uint32_t{1025}),
              "damaged: the checksum is longer than its field");
    EXPECT_EQ(withTrailer(84, std::uint32_t{0xFFFFFFFF}),
              "damaged: the checksum is longer than its field");
}

TEST(UdifDamage, HugeNumbersInTheTrailerAreRefused) {
    EXPECT_EQ(withTrailer(24, huge), forkBeyond);
    EXPECT_EQ(withTrailer(32, huge), forkBeyond);
    EXPECT_EQ(withTrailer(216, huge), listBeyond);
    EXPECT_EQ(withTrailer(224, huge), listBeyond);
    EXPECT_EQ(withTrailer(40, huge, true), listBeyond);
    EXPECT_EQ(withTrailer(48, huge, true), listBeyond);
    EXPECT_EQ(withTrailer(492, huge), "damaged: the disk is larger than any can be");
    EXPECT_EQ(withTrailer(492, std::uint64_t{1} << 54U),
              "damaged: the disk is larger than any can be");
}

TEST(UdifDamage, ADiskMayBeAsLargeAsFilesCanBe) {
    EXPECT_EQ(withTrailer(492, (std::uint64_t{1} << 54U) - 1), "image");
}

TEST(UdifDamage, ListsOfTablesAreNeeded) {
    EXPECT_EQ(withTrailer(224, std::uint64_t{0}), "damaged: there is no list of block tables");
    EXPECT_EQ(withTrailer(224, std::uint64_t{100}), malformed);
    EXPECT_EQ(withParts([](udif::Parts& parts) { parts.tables.clear(); }),
              "damaged: there are no block tables");
}

TEST(UdifDamage, ListsWithoutTablesAreMalformed) {
    const std::string bytes = udif::imageOf(goodParts());
    for (const std::string key : {"resource-fork", "blkx", "Data"}) {
        std::string changed = bytes;
        changed.at(changed.find("<key>" + key) + 5) = 'x';
        EXPECT_EQ(outcome(changed), malformed) << key;
    }
}

TEST(UdifDamage, ListsOfOtherValuesAreMalformed) {
    const auto withList = [](const std::string& value) {
        const std::string list = "<plist version=\"1.0\">" + value + "</plist>";
        const udif::Parts parts = goodParts();
        return outcome(parts.dataFork + list + udif::trailerOf(parts, 0, list.size()));
    };
    const auto withFork = [&](const std::string& fork) {
        return withList("<dict><key>resource-fork</key>" + fork + "</dict>");
    };
    const auto withTables = [&](const std::string& tables) {
        return withFork("<dict><key>blkx</key>" + tables + "</dict>");
    };
    EXPECT_EQ(withTables("<array/>"), "damaged: there are no block tables");
    EXPECT_EQ(withTables("<array><dict><key>Data</key><data>AAAA</data></dict></array>"),
              "damaged: a block table is malformed");
    EXPECT_EQ(withList("<array/>"), malformed);
    EXPECT_EQ(withFork("<string>blkx</string>"), malformed);
    EXPECT_EQ(withTables("<dict/>"), malformed);
    EXPECT_EQ(withTables("<array><string>Data</string></array>"), malformed);
    EXPECT_EQ(withTables("<array><dict><key>Data</key><string>AAAA</string></dict></array>"),
              malformed);
}

TEST(UdifDamage, ListsBeyondTheLimitAreNotRead) {
    udif::Parts parts = goodParts();
    parts.dataFork.resize((std::size_t{16} << 20U) + 1);
    std::string bytes = udif::imageOf(parts);
    const std::size_t trailer = bytes.size() - udif::trailerSize;
    udif::put(bytes, trailer + 216, std::uint64_t{0});
    udif::put(bytes, trailer + 224, std::uint64_t{parts.dataFork.size()});
    EXPECT_EQ(outcome(bytes), "unsupported: the list of block tables is larger than 16 MiB");
}

TEST(UdifDamage, ListsThatCannotBeReadAreDamage) {
    const std::string bytes = udif::imageOf(goodParts());
    MemorySource file(bytes);
    file.breakAt(bytes.find("<plist"));
    const auto result = readUdif(file);
    const auto* const error = std::get_if<UdifError>(&result);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind, UdifError::Kind::damaged);
    EXPECT_EQ(error->reason, "the list of block tables cannot be read");
}

TEST(UdifDamage, ChunksStayInTheirTable) {
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) { chunk.firstSector = 5; }), beyondTable);
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) { chunk.firstSector = huge; }), beyondTable);
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) { chunk.sectorCount = 9; }), beyondTable);
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) { chunk.sectorCount = huge; }), beyondTable);
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) {
                  chunk.firstSector = 3;
                  chunk.sectorCount = huge - 1;
              }),
              beyondTable);
}

TEST(UdifDamage, ChunksStayOnTheDisk) {
    const auto withTable = [](const std::function<void(udif::Table&)>& change) {
        return withParts([&](udif::Parts& parts) { change(parts.tables[1]); });
    };
    EXPECT_EQ(withTable([](udif::Table& table) { table.firstSector = 9; }), beyondDisk);
    EXPECT_EQ(withTable([](udif::Table& table) { table.firstSector = huge; }), beyondDisk);
    EXPECT_EQ(withTable([](udif::Table& table) {
                  table.sectorCount = huge;
                  table.chunks[0].sectorCount = huge - 4;
              }),
              beyondDisk);
    EXPECT_EQ(withTrailer(492, std::uint64_t{15}), beyondDisk);
}

TEST(UdifDamage, DataStaysInTheFile) {
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) { chunk.dataOffset = huge; }), dataBeyond);
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) { chunk.dataLength = huge; }), dataBeyond);
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) {
                  chunk.dataOffset = 2;
                  chunk.dataLength = huge - 1;
              }),
              dataBeyond);
    EXPECT_EQ(withParts([](udif::Parts& parts) { parts.tables[0].dataOffset = huge; }), dataBeyond);
}

TEST(UdifDamage, ChunksHaveTheirData) {
    udif::Parts raw = goodParts(Kind::raw);
    raw.tables[0].chunks[0].dataLength -= 1;
    EXPECT_EQ(outcome(udif::imageOf(raw)), "damaged: a chunk lacks data");
    udif::Parts large = goodParts();
    large.dataFork.resize(1U << 20U);
    large.tables[0].chunks[0].dataLength = 4 * 512 * 2 + 4096;
    EXPECT_EQ(outcome(udif::imageOf(large)), "image");
    large.tables[0].chunks[0].dataLength += 1;
    EXPECT_EQ(outcome(udif::imageOf(large)),
              "damaged: the data of a chunk is larger than what it holds");
}

TEST(UdifDamage, UnknownKindsAreUnsupported) {
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) { chunk.type = 0x80000009; }),
              "unsupported: chunks of the kind 0x80000009 are not known");
    EXPECT_EQ(withChunk([](udif::Chunk& chunk) { chunk.type = 3; }),
              "unsupported: chunks of the kind 0x3 are not known");
}

TEST(UdifDamage, CompressedChunksHaveALimit) {
    const auto withSize = [](Kind kind, std::uint64_t sectors) {
        udif::Parts parts;
        parts.sectorCount = sectors;
        parts.tables.push_back({"", 0, sectors, 0, 0, {{udif::typeOf(kind), 0, sectors, 0, 0}}});
        return outcome(udif::imageOf(parts));
    };
    constexpr std::uint64_t limit = (64U << 20U) / 512;
    EXPECT_EQ(withSize(Kind::zlib, limit), "image");
    EXPECT_EQ(withSize(Kind::zlib, limit + 1),
              "unsupported: a compressed chunk is larger than 64 MiB");
    EXPECT_EQ(withSize(Kind::zero, limit + 1), "image");
    EXPECT_EQ(withSize(Kind::ignore, limit << 20U), "image");
}

TEST(UdifDamage, ChunksDoNotOverlap) {
    EXPECT_EQ(withParts([](udif::Parts& parts) { parts.tables[0].chunks[1].firstSector -= 1; }),
              "damaged: two chunks hold the sector 3");
    EXPECT_EQ(withParts([](udif::Parts& parts) { parts.tables[1].firstSector = 0; }),
              "damaged: two chunks hold the sector 0");
    EXPECT_EQ(withParts([](udif::Parts& parts) {
                  parts.tables[0].chunks.push_back({udif::typeOf(Kind::ignore), 0, 8, 0, 0});
              }),
              "damaged: two chunks hold the sector 0");
}

TEST(UdifDamage, TablesAreWhole) {
    const std::string bytes = udif::bytesOf(goodParts().tables[0]);
    const auto withTable = [&](std::string table) {
        // The table goes by a resource fork, where its bytes can be found again.
        udif::Parts parts = goodParts();
        parts.oldStyle = true;
        std::string image = udif::imageOf(parts);
        const auto place = image.find(bytes);
        udif::put(image, place - 4, static_cast<std::uint32_t>(table.size()));
        image.replace(place, table.size(), table);
        return outcome(image);
    };
    EXPECT_EQ(withTable(bytes), "image");
    EXPECT_EQ(withTable(bytes.substr(0, 203)), "damaged: a block table is malformed");
    EXPECT_EQ(withTable(bytes.substr(0, bytes.size() - 1)), "damaged: a block table is cut off");
    std::string other = bytes;
    other[0] = 'M';
    EXPECT_EQ(withTable(other), "damaged: a block table is malformed");
    other = bytes;
    udif::put(other, 4, std::uint32_t{2});
    EXPECT_EQ(withTable(other), "unsupported: version 2 of block tables is not known");
    other = bytes;
    udif::put(other, 200, std::uint32_t{0xFFFFFFFF});
    EXPECT_EQ(withTable(other), "damaged: a block table is cut off");
}

// An image with its tables in a resource fork, whose offset is the second number.
std::pair<std::string, std::size_t> oldImage() {
    udif::Parts parts = goodParts();
    parts.oldStyle = true;
    return {udif::imageOf(parts), parts.dataFork.size()};
}

TEST(UdifDamage, ResourceForksAreChecked) {
    const auto [bytes, fork] = oldImage();
    for (const std::size_t field : {0U, 4U, 8U, 12U}) {
        for (const std::uint32_t number : {0xFFFFFFFFU, 0x80000000U}) {
            std::string changed = bytes;
            udif::put(changed, fork + field, number);
            EXPECT_EQ(outcome(changed), malformed) << field;
        }
    }
    const auto withLength = [&, &image = bytes](std::size_t length) {
        std::string changed = image;
        udif::put(changed, changed.size() - udif::trailerSize + 48, std::uint64_t{length});
        return outcome(changed);
    };
    EXPECT_EQ(withLength(15), malformed);
    EXPECT_EQ(withLength(16), malformed);
    const std::size_t map = bytes.find("plst", fork) - 30;
    const auto withMap = [&, &image = bytes](std::size_t offset, std::uint16_t number) {
        std::string changed = image;
        udif::put(changed, map + offset, number);
        return outcome(changed);
    };
    std::string shortMap = bytes;
    udif::put(shortMap, fork + 12, std::uint32_t{27});
    EXPECT_EQ(outcome(shortMap), malformed) << "size of the map";
    EXPECT_EQ(withMap(24, 0xFFFF), malformed) << "place of the types";
    EXPECT_EQ(withMap(26, 0xFFFF), "image") << "place of the names";
    EXPECT_EQ(withMap(28, 0xFFFE), malformed) << "number of types";
    EXPECT_EQ(withMap(28, 0), "damaged: there are no block tables") << "other types only";
    EXPECT_EQ(withMap(42, 0xFFFE), malformed) << "number of references";
    EXPECT_EQ(withMap(42, 0xFFFF), "damaged: there are no block tables") << "no reference";
    EXPECT_EQ(withMap(44, 0xFFF0), malformed) << "place of the references";
    EXPECT_EQ(withMap(58 + 4, 0x00FF), malformed) << "place of a resource";
}

TEST(UdifDamage, ResourcesDoNotShareTheirBytes) {
    udif::Parts parts = goodParts();
    parts.oldStyle = true;
    parts.tables.resize(1);
    std::string bytes = udif::imageOf(parts);
    EXPECT_EQ(outcome(bytes), "image");
    // As many references to the one table, in the room of the names and behind.
    const std::size_t types = bytes.find("plst", parts.dataFork.size()) - 2;
    const std::string reference = bytes.substr(types + 30, 12);
    std::string copies;
    for (int i = 0; i < 100; ++i) {
        copies += reference;
    }
    bytes.replace(types + 30, bytes.size() - 512 - types - 30, copies);
    udif::put(bytes, types + 14, std::uint16_t{99});
    const std::size_t trailer = bytes.size() - 512;
    const std::size_t length = trailer - parts.dataFork.size();
    udif::put(bytes, trailer + 48, std::uint64_t{length});
    udif::put(bytes, parts.dataFork.size() + 12,
              static_cast<std::uint32_t>(trailer - (types - 28)));
    EXPECT_EQ(outcome(bytes), malformed);
}

TEST(UdifDamage, NoNumberIsTrusted) {
    const auto [bytes, fork] = oldImage();
    for (std::size_t offset = fork; offset + 8 <= bytes.size(); ++offset) {
        for (const std::uint64_t number : {huge, huge >> 1U, std::uint64_t{1} << 63U}) {
            std::string changed = bytes;
            udif::put(changed, offset, number);
            const auto result = readUdif(MemorySource(changed));
            const auto* image = std::get_if<UdifImage>(&result);
            for (const auto& chunk : image != nullptr ? image->chunks : decltype(image->chunks)()) {
                ASSERT_LE(chunk.dataLength, changed.size() - chunk.dataOffset) << offset;
                ASSERT_LE(chunk.sectorCount, image->sectorCount - chunk.firstSector) << offset;
            }
        }
    }
}

} // namespace
