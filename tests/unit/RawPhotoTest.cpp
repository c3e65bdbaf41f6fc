// SPDX-License-Identifier: Apache-2.0
// Raw photographs and TIFF files, made by hand: no camera's are small enough to be kept.
#include "platform/linux/media/ImageReader.h"
#include "tests/unit/support/ImageDescription.h"
#include "tests/unit/support/MemoryFile.h"
#include "tests/unit/support/TiffWriter.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using namespace std::string_literals;

std::string read(std::string_view bytes) {
    return ImageDescription::of(platform::media::readImage(MemoryFile(bytes).descriptor(), true));
}

// An image of one directory: kind, size, bits, and what the numbers stand for.
TiffDirectory imageOf(std::uint64_t kind, std::uint64_t width, std::uint64_t height,
                      std::uint64_t bits, std::uint64_t photometric) {
    return {tiffLongs(254, {kind}), tiffLongs(256, {width}), tiffLongs(257, {height}),
            tiffShorts(258, {bits}), tiffShorts(262, {photometric})};
}

constexpr std::uint64_t rgb = 2;
constexpr std::uint64_t colorFilterArray = 32803;

class RawPhoto : public ::testing::Test {
protected:
    static void SetUpTestSuite() { platform::media::prepareImageReaders(); }
};

} // namespace

TEST_F(RawPhoto, IsTheLargestImageThatIsNoPreview) {
    TiffDirectory first = imageOf(1, 160, 120, 8, rgb);
    first.push_back(tiffText(271, "NIKON CORPORATION\0"sv));
    first.push_back(tiffText(272, "Model\0"sv));
    first.push_back(tiffDirectories(
        330, {imageOf(1, 9000, 6000, 8, 6), imageOf(0, 6048, 4032, 14, colorFilterArray)}));
    EXPECT_EQ(read(tiffBytes(first)),
              "6048x4032 14 RGB count=1 tiff make=NIKON CORPORATION model=Model");
}

TEST_F(RawPhoto, MayBeInTheFirstDirectoryOfADng) {
    TiffDirectory first = imageOf(0, 4000, 3000, 16, colorFilterArray);
    first.push_back({50706, 1, 4, "\1\4\0\0"s, {}});
    EXPECT_EQ(read(tiffBytes(first)), "4000x3000 16 RGB count=1 tiff");
}

TEST_F(RawPhoto, OfACr2HasTheSizeThatTheCameraNames) {
    TiffDirectory first = imageOf(0, 2048, 1360, 8, rgb);
    first.push_back(tiffDirectories(34665, {{tiffLongs(40962, {5184}), tiffLongs(40963, {3456})}}));
    EXPECT_EQ(read(tiffBytes(first, "CR\2\0\0\0\0\0"sv)), "5184x3456 -1 RGB count=1 tiff exif");
}

TEST_F(RawPhoto, OfACr2HasNotTheDepthOfThePictureForALook) {
    const TiffDirectory first = imageOf(0, 2048, 1360, 8, rgb);
    EXPECT_EQ(read(tiffBytes(first, "CR\2\0\0\0\0\0"sv)), "2048x1360 -1 RGB count=1 tiff");
}

TEST_F(RawPhoto, HasTheSizeOfTheExifBlockWhenNoDirectoryHasOne) {
    const TiffDirectory first{
        tiffDirectories(330, {{tiffShorts(262, {colorFilterArray})}}),
        tiffDirectories(34665, {{tiffLongs(40962, {6000}), tiffLongs(40963, {4000})}})};
    EXPECT_EQ(read(tiffBytes(first)), "6000x4000 -1 RGB count=1 tiff exif");
}

TEST_F(RawPhoto, IsNotWhatAnOrdinaryTiffFileHas) {
    TiffDirectory first = imageOf(0, 12, 8, 8, rgb);
    for (const TiffField& field : {tiffLongs(273, {8}), tiffShorts(277, {3}), tiffLongs(278, {8}),
                                   tiffLongs(279, {288})}) { // where the pixels are
        first.push_back(field);
    }
    EXPECT_EQ(read(tiffBytes(first)), "12x8 8 RGB alpha=no count=1 tiff");
}

TEST_F(RawPhoto, SurvivesDamageAtEveryByte) {
    TiffDirectory first = imageOf(1, 160, 120, 8, rgb);
    first.push_back(tiffText(271, "NIKON CORPORATION\0"sv));
    first.push_back(tiffDirectories(330, {imageOf(0, 6048, 4032, 14, colorFilterArray)}));
    const std::string whole = tiffBytes(first);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::ignore = read(std::string_view(whole).substr(0, i));
        for (const char byte : {'\0', '\1', '\x7F', '\x80', '\xFF'}) {
            std::string damaged = whole;
            damaged[i] = byte;
            std::ignore = read(damaged);
        }
    }
    EXPECT_NE(read(whole), "no image");
}
