// SPDX-License-Identifier: Apache-2.0
// The formats that are read by code of our own, from files made by hand.
#include "platform/linux/media/ImageReader.h"
#include "tests/unit/support/ByteWriter.h"
#include "tests/unit/support/ImageDescription.h"
#include "tests/unit/support/MemoryFile.h"

#include <bit>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

std::string read(std::string_view bytes) {
    return ImageDescription::of(platform::media::readImage(MemoryFile(bytes).descriptor(), true));
}
std::string read(const ByteWriter& writer) {
    return read(writer.bytes());
}

// What is read of the file when it is cut off: nothing before `needed` bytes are there.
void expectNothingBefore(std::size_t needed, const std::string& bytes) {
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_EQ(read(std::string_view(bytes).substr(0, size)) == "no image", size < needed)
            << size;
    }
}

struct Bitmap {
    std::uint64_t headerSize = 40;
    std::uint64_t width = 12;
    std::uint64_t height = 8;
    std::uint64_t bits = 24;
    std::uint64_t compression = 0;
    std::uint64_t perMetre = 0;
};

ByteWriter bitmap(const Bitmap& made) {
    ByteWriter writer;
    writer.text("BM").zeros(12).little(made.headerSize, 4);
    if (made.headerSize == 12) {
        return writer.little(made.width, 2)
            .little(made.height, 2)
            .little(1, 2)
            .little(made.bits, 2);
    }
    writer.little(made.width, 4).little(made.height, 4).little(1, 2).little(made.bits, 2);
    if (made.headerSize > 16) {
        writer.little(made.compression, 4).zeros(4);
        writer.little(made.perMetre, 4).little(made.perMetre, 4).zeros(8);
    }
    return writer;
}

// The fields behind the first forty bytes: masks, colour space, and the place of the profile.
ByteWriter longBitmap(std::uint64_t headerSize, std::uint64_t alphaMask, std::string_view space) {
    ByteWriter writer = bitmap({.headerSize = headerSize, .bits = 32, .compression = 3});
    writer.little(0x3FF00000, 4).little(0xFFC00, 4).little(0x3FF, 4).little(alphaMask, 4);
    writer.text(space).zeros(36 + 12);
    return headerSize < 124 ? writer
                            : writer.zeros(4).little(124, 4).little(3, 4).zeros(4).text("ICC");
}

} // namespace

TEST(BmpReader, ReadsHeadersOfEveryKind) {
    EXPECT_EQ(read(bitmap({.headerSize = 12})), "12x8 8 RGB alpha=no count=1");
    EXPECT_EQ(read(bitmap({.headerSize = 16})), "12x8 8 RGB alpha=no count=1");
    EXPECT_EQ(read(bitmap({})), "12x8 8 RGB alpha=no count=1");
    EXPECT_EQ(read(bitmap({.headerSize = 64}).zeros(24)), "12x8 8 RGB alpha=no count=1");
    EXPECT_EQ(read(longBitmap(108, 0, "BGRs")),
              "12x8 10 RGB profile=sRGB IEC61966-2.1 alpha=no count=1");
    EXPECT_EQ(read(longBitmap(124, 0xC0000000, "DEBM")), "12x8 10 RGB alpha=yes count=1");
}

TEST(BmpReader, RefusesHeadersOfNoKind) {
    EXPECT_EQ(read(bitmap({.headerSize = 0})), "no image");
    EXPECT_EQ(read(bitmap({.headerSize = 39}).zeros(99)), "no image");
    EXPECT_EQ(read(bitmap({.bits = 23})), "no image");
    EXPECT_EQ(read(bitmap({.width = 0})), "no image");
    EXPECT_EQ(read(bitmap({.width = 0xFFFFFFFF})), "no image");
    EXPECT_EQ(read(bitmap({.height = 0})), "no image");
    EXPECT_EQ(read("BM and other words of a text that only looks like one at first"), "no image");
}

TEST(BmpReader, CountsRowsFromEitherEnd) {
    EXPECT_EQ(read(bitmap({.height = 0xFFFFFFF8})), "12x8 8 RGB alpha=no count=1");
    EXPECT_EQ(read(bitmap({.height = 0x80000000})), "12x2147483648 8 RGB alpha=no count=1");
}

TEST(BmpReader, TellsHowManyBitsAComponentHas) {
    EXPECT_EQ(read(bitmap({.bits = 1})), "12x8 8 RGB alpha=no count=1");
    EXPECT_EQ(read(bitmap({.bits = 16})), "12x8 5 RGB alpha=no count=1");
    EXPECT_EQ(read(bitmap({.bits = 16, .compression = 3}).little(0xF00, 4)),
              "12x8 4 RGB alpha=no count=1");
}

TEST(BmpReader, RoundsADensityToAWholeNumberPerInch) {
    EXPECT_EQ(read(bitmap({.perMetre = 2835})), "12x8 8 RGB dpi=72x72 alpha=no count=1");
    EXPECT_EQ(read(bitmap({.perMetre = 11811})), "12x8 8 RGB dpi=300x300 alpha=no count=1");
    EXPECT_EQ(read(bitmap({.perMetre = 0xFFFFFFFF})), "12x8 8 RGB alpha=no count=1");
}

TEST(BmpReader, NeedsItsWholeHeader) {
    expectNothingBefore(26, bitmap({.headerSize = 12}).bytes());
    expectNothingBefore(54, bitmap({}).bytes());
    expectNothingBefore(14 + 124, longBitmap(124, 0xFF, "DEBM").bytes());
}

namespace {

ByteWriter icon(std::uint64_t count, std::uint64_t offset, std::uint64_t kind = 1) {
    return ByteWriter()
        .zeros(2)
        .little(kind, 2)
        .little(count, 2)
        .little(48, 1)
        .little(0, 1)
        .zeros(6)
        .little(40, 4)
        .little(offset, 4);
}
ByteWriter iconOfBitmap(std::uint64_t bits) {
    return icon(1, 22)
        .little(40, 4)
        .little(48, 4)
        .little(512, 4)
        .little(1, 2)
        .little(bits, 2)
        .zeros(24);
}

} // namespace

TEST(IcoReader, ReadsTheFirstEntry) {
    EXPECT_EQ(read(iconOfBitmap(24)), "48x256 8 RGB alpha=no count=1");
    EXPECT_EQ(read(iconOfBitmap(32)), "48x256 8 RGB alpha=yes count=1");
    EXPECT_EQ(read(icon(3, 54, 2).zeros(32).little(40, 4).zeros(36)),
              "48x256 8 RGB alpha=no count=3");
}

TEST(IcoReader, TakesTheSizeOfAPngFromItself) {
    EXPECT_EQ(read(icon(1, 22).text("\x89PNG\r\n\x1A\n\0\0\0\rIHDR"sv).big(512, 4).big(300, 4)),
              "512x300 8 RGB alpha=yes count=1");
}

TEST(IcoReader, RefusesDirectoriesThatMakeNoSense) {
    EXPECT_EQ(read(icon(1, 22).text("\x89PNG\r\n\x1A\n\0\0\0\rIHDR"sv).zeros(8)), "no image");
    EXPECT_EQ(read(icon(0, 22).little(40, 4).zeros(36)), "no image");
    EXPECT_EQ(read(icon(2, 22).little(40, 4).zeros(36)), "no image");
    EXPECT_EQ(read(icon(1, 0xFFFFFFFF).little(40, 4).zeros(36)), "no image");
    EXPECT_EQ(read(icon(1, 22).little(500, 4).zeros(36)), "no image");
    expectNothingBefore(46, iconOfBitmap(32).bytes());
}

namespace {

ByteWriter document(std::uint64_t mode, std::uint64_t channels, std::uint64_t version = 1) {
    return ByteWriter()
        .text("8BPS")
        .big(version, 2)
        .zeros(6)
        .big(channels, 2)
        .big(8, 4)
        .big(12, 4)
        .big(16, 2)
        .big(mode, 2);
}

} // namespace

TEST(PsdReader, TellsColourModelsAndAlpha) {
    EXPECT_EQ(read(document(3, 3)), "12x8 16 RGB alpha=no count=1");
    EXPECT_EQ(read(document(3, 4)), "12x8 16 RGB alpha=yes count=1");
    EXPECT_EQ(read(document(9, 3)), "12x8 16 Lab alpha=no count=1");
    EXPECT_EQ(read(document(4, 4)), "12x8 16 CMYK alpha=no count=1");
    EXPECT_EQ(read(document(0, 1)), "12x8 16 Gray alpha=no count=1");
    EXPECT_EQ(read(document(8, 1)), "12x8 16 Gray alpha=no count=1");
    EXPECT_EQ(read(document(2, 1, 2)), "12x8 16 RGB alpha=no count=1");
    EXPECT_EQ(read(document(7, 3)), "12x8 16 no-model count=1");
    EXPECT_EQ(read(document(3, 3, 3)), "no image");
}

TEST(PsdReader, FindsTheResolutionBehindThePalette) {
    const std::string whole = document(2, 1)
                                  .big(5, 4)
                                  .text("color")
                                  .big(28, 4)
                                  .text("8BIM")
                                  .big(1005, 2)
                                  .big(0, 2)
                                  .big(16, 4)
                                  .big(300U << 16U, 4)
                                  .zeros(4)
                                  .big(150U << 16U, 4)
                                  .zeros(4)
                                  .bytes();
    EXPECT_EQ(read(whole), "12x8 16 RGB dpi=300x150 alpha=no count=1");
    expectNothingBefore(26, whole);
    EXPECT_EQ(read(document(2, 1).big(0xFFFFFFFF, 4).zeros(40)), "12x8 16 RGB alpha=no count=1");
    EXPECT_EQ(read(document(2, 1).big(0, 4).big(0xFFFFFFFF, 4).zeros(40)),
              "12x8 16 RGB alpha=no count=1");
}

TEST(PsdReader, LeavesOutAResolutionThatIsTooShort) {
    const auto withResolution = [](std::uint64_t size) {
        ByteWriter writer = document(2, 1).big(0, 4).big(size + 12, 4);
        writer.text("8BIM").big(1005, 2).big(0, 2).big(size, 4);
        for (std::uint64_t i = 0; i < size; i += 4) {
            writer.big(300U << 16U, 4);
        }
        return writer;
    };
    EXPECT_EQ(read(withResolution(12)), "12x8 16 RGB dpi=300x300 alpha=no count=1");
    EXPECT_EQ(read(withResolution(8)), "12x8 16 RGB alpha=no count=1");
}

namespace {

ByteWriter gimp(std::string_view version, std::uint64_t baseType = 0) {
    return ByteWriter()
        .text("gimp xcf ")
        .text(version)
        .zeros(1)
        .big(12, 4)
        .big(8, 4)
        .big(baseType, 4);
}
// Properties with a resolution, and one layer of that kind right behind its pointer.
ByteWriter& withLayer(ByteWriter& writer, std::uint64_t kind, std::size_t pointerSize) {
    writer.big(17, 4).big(1, 4).zeros(1);
    writer.big(19, 4)
        .big(8, 4)
        .big(std::bit_cast<std::uint32_t>(300.0F), 4)
        .big(std::bit_cast<std::uint32_t>(150.0F), 4)
        .zeros(8);
    const std::size_t place = writer.size() + 2 * pointerSize;
    return writer.big(place, pointerSize).zeros(pointerSize).big(12, 4).big(8, 4).big(kind, 4);
}

} // namespace

TEST(XcfReader, ReadsEveryVersion) {
    ByteWriter first = gimp("file");
    EXPECT_EQ(read(withLayer(first, 1, 4)), "12x8 8 RGB dpi=300x150 alpha=yes count=1");
    ByteWriter fourth = gimp("v004", 1).big(3, 4);
    EXPECT_EQ(read(withLayer(fourth, 2, 4)), "12x8 16 Gray dpi=300x150 alpha=no count=1");
    ByteWriter fifth = gimp("v005", 2).big(500, 4);
    EXPECT_EQ(read(withLayer(fifth, 4, 4)), "12x8 32 RGB dpi=300x150 alpha=no count=1");
    ByteWriter eleventh = gimp("v011").big(650, 4);
    EXPECT_EQ(read(withLayer(eleventh, 1, 8)), "12x8 32 RGB dpi=300x150 alpha=yes count=1");
}

TEST(XcfReader, RefusesWhatIsNoDocument) {
    EXPECT_EQ(read(gimp("v0x4")), "no image");
    EXPECT_EQ(read(gimp("fool")), "no image");
    EXPECT_EQ(read(gimp("v004", 3)), "no image");
}

TEST(XcfReader, SaysWhatItCanOfDamagedDocuments) {
    EXPECT_EQ(read(gimp("v005").big(9900, 4)), "12x8 -1 RGB count=1");
    EXPECT_EQ(read(gimp("v001").big(17, 4).big(0xFFFFFFFF, 4).zeros(40)), "12x8 8 RGB count=1");
    EXPECT_EQ(read(gimp("v001").zeros(8).big(0xFFFFFFF0, 4)), "12x8 8 RGB count=1");
    EXPECT_EQ(read(gimp("v011").big(150, 4).zeros(8).big(~0ULL, 8)), "12x8 8 RGB count=1");
    ByteWriter whole = gimp("v011").big(150, 4);
    expectNothingBefore(26, withLayer(whole, 1, 8).bytes());
}

TEST(XcfReader, FollowsNoListForEver) {
    ByteWriter properties = gimp("v001");
    ByteWriter layers = gimp("v001").zeros(8);
    constexpr std::size_t count = 300;
    constexpr std::size_t pointerSize = 4;
    const std::size_t opaque = layers.size() + (count + 1) * pointerSize;
    constexpr std::size_t layerSize = 12;
    for (std::size_t i = 0; i < count; ++i) {
        properties.big(17, 4).zeros(4);
        layers.big(opaque, pointerSize);
    }
    layers.big(opaque + layerSize, pointerSize);
    for (const std::uint64_t kind : {0U, 1U}) {
        layers.big(12, 4).big(8, 4).big(kind, 4);
    }
    EXPECT_EQ(read(withLayer(properties, 1, pointerSize)), "12x8 8 RGB count=1");
    EXPECT_EQ(read(layers), "12x8 8 RGB alpha=no count=1");
}
