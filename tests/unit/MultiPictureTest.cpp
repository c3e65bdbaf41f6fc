// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/MultiPicture.h"

#include "tests/unit/support/TiffWriter.h"

#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

namespace {

struct Picture {
    std::uint64_t kind;
    std::uint64_t size = 1000;
    std::uint64_t place = 5000;
};

constexpr std::uint64_t fileSize = 10'000;
constexpr std::uint64_t multipleView = 0x020002;
constexpr std::uint64_t representative = 0x20000000;

std::uint64_t count(std::string index) {
    return platform::media::pictureCount(std::as_writable_bytes(std::span(index)), fileSize);
}

std::string indexOf(std::initializer_list<Picture> pictures) {
    ByteWriter entries;
    for (const auto& [kind, size, place] : pictures) {
        entries.little(kind, 4).little(size, 4).little(place, 4).zeros(4);
    }
    const auto length = static_cast<std::uint32_t>(entries.size());
    return tiffBytes({{0xB000, 7, 4, "0100", {}},
                      tiffLongs(0xB001, {pictures.size()}),
                      {0xB002, 7, length, entries.bytes(), {}}});
}

} // namespace

TEST(MultiPicture, CountsTheViewsOfOneSubject) {
    EXPECT_EQ(count(indexOf({{multipleView | representative}, {multipleView}})), 2);
    EXPECT_EQ(count(indexOf({{0x020001}, {0x020001}, {0x020001}})), 3); // a panorama
}

TEST(MultiPicture, CountsNoSmallerCopiesNorMaps) {
    EXPECT_EQ(count(indexOf({{0x030000}, {0x010001}, {0x010002}})), 1);
    EXPECT_EQ(count(indexOf({{0x030000}, {0}})), 1);
    EXPECT_EQ(count(indexOf({{multipleView}, {multipleView}, {0x010001}})), 2);
}

TEST(MultiPicture, CountsWhatIsInTheFile) {
    EXPECT_EQ(count(indexOf({{multipleView, 5000, 0}, {multipleView, 5000, 5000}})), 2);
    EXPECT_EQ(count(indexOf({{multipleView, 5000, 0}, {multipleView, 5001, 5000}})), 1);
    EXPECT_EQ(count(indexOf({{multipleView}, {multipleView, 0xFFFFFFFF, 0xFFFFFFFF}})), 1);
}

TEST(MultiPicture, IsOnePictureWithoutAnIndex) {
    EXPECT_EQ(count(""), 1);
    EXPECT_EQ(count("ABCDEFGHIJKL"), 1);
    EXPECT_EQ(count(tiffBytes({tiffLongs(0xB001, {7})})), 1);
    EXPECT_EQ(count(indexOf({})), 1);
}

TEST(MultiPicture, CountsEntriesOfEitherByteOrder) {
    const std::string index = ByteWriter()
                                  .text("MM")
                                  .big(42, 2)
                                  .big(8, 4)
                                  .big(1, 2)
                                  .big(0xB002, 2)
                                  .big(7, 2)
                                  .big(32, 4)
                                  .big(26, 4)
                                  .zeros(4)
                                  .big(multipleView, 4)
                                  .zeros(12)
                                  .big(multipleView, 4)
                                  .zeros(12)
                                  .bytes();
    EXPECT_EQ(count(index), 2);
}
