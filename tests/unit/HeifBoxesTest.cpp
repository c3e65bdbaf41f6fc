// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/HeifBoxes.h"

#include "tests/unit/support/IsoBoxes.h"
#include "tests/unit/support/MemoryFile.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::OpenedFile;
using namespace platform::media;
using namespace std::string_view_literals;

bool isMonochrome(std::string_view bytes) {
    const MemoryFile memory(bytes);
    const OpenedFile file = OpenedFile::of(memory.descriptor()).value();
    const auto meta = descriptionOfHeif(file).meta;
    return meta && isMonochromeHeif(file, *meta);
}

std::string longBox(std::string_view type, std::string_view content) {
    return ByteWriter().big(1, 4).text(type).big(content.size() + 16, 8).text(content).bytes();
}

// The configuration of a decoder, which says whether there are colours.
std::string hevc(std::uint64_t chroma) {
    return isoBox("hvcC", ByteWriter().zeros(16).big(0xFC | chroma, 1).zeros(6).bytes());
}
std::string av1(std::uint64_t flags) {
    return isoBox("av1C", ByteWriter().big(0x8100, 2).big(flags, 1).zeros(1).bytes());
}

// A file whose pictures have these properties.
std::string fileOf(std::string_view properties) {
    const std::string meta = std::string(4, '\0').append(
        isoBox("hdlr", "picture").append(isoBox("iprp", isoBox("ipco", properties))));
    return isoBox("ftyp", "heic").append(longBox("free", "x")).append(isoBox("meta", meta));
}

std::uint64_t endOfDescription(std::string_view bytes) {
    const MemoryFile memory(bytes);
    return descriptionOfHeif(OpenedFile::of(memory.descriptor()).value()).end;
}

} // namespace

TEST(HeifBoxes, TellWhetherAnyPictureHasColours) {
    EXPECT_TRUE(isMonochrome(fileOf(hevc(0))));
    EXPECT_FALSE(isMonochrome(fileOf(hevc(1))));
    EXPECT_TRUE(isMonochrome(fileOf(av1(0x1C))));
    EXPECT_FALSE(isMonochrome(fileOf(av1(0x0C))));
    EXPECT_FALSE(isMonochrome(fileOf(isoBox("ispe", "size").append(hevc(1)).append(hevc(0)))));
    EXPECT_TRUE(isMonochrome(fileOf(hevc(0).append(hevc(0)))));
    EXPECT_FALSE(isMonochrome(fileOf(isoBox("ispe", "size"))));
}

TEST(HeifBoxes, MaySayThatTheyGoToTheEnd) {
    std::string file = fileOf(hevc(0));
    const auto meta = file.find("meta");
    file.replace(meta - 4, 4, "\0\0\0\0"sv);
    EXPECT_TRUE(isMonochrome(file));
}

TEST(HeifBoxes, AreNoneWhereTheirSizesMakeNoSense) {
    const std::string whole = fileOf(hevc(0));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(isMonochrome(std::string_view(whole).substr(0, size))) << size;
    }
    EXPECT_FALSE(isMonochrome(fileOf(isoBox("hvcC", "short"))));
    EXPECT_FALSE(isMonochrome("\0\0\0\1meta\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"sv));
    EXPECT_FALSE(isMonochrome("\0\0\0\7meta"sv));
}

TEST(HeifBoxes, AreLookedThroughForALimitedTime) {
    std::string boxes;
    for (int i = 0; i < 20000; ++i) {
        boxes.append(isoBox("free", ""));
    }
    const std::string behind = fileOf(hevc(0));
    EXPECT_TRUE(isMonochrome(isoBox("free", "").append(behind)));
    EXPECT_FALSE(isMonochrome(boxes.append(behind)));
}

TEST(HeifBoxes, DescribeThePicturesUpToTheirData) {
    const std::string description = fileOf(hevc(1));
    const std::string data = isoBox("mdat", "data").append(longBox("mdat", "more"));
    EXPECT_EQ(endOfDescription(description + data), description.size());
    EXPECT_EQ(endOfDescription(description), description.size());
    EXPECT_EQ(endOfDescription(""), 0U);
}

TEST(HeifBoxes, DescribeThePicturesToTheEndWhereDataDoNotComeLast) {
    for (const std::string& last : {isoBox("meta", "last"), std::string("\0\0\7"sv)}) {
        const std::string file = fileOf(hevc(1)).append(isoBox("mdat", "data")).append(last);
        EXPECT_EQ(endOfDescription(file), file.size());
    }
    const std::string cut = fileOf(hevc(1)).append(isoBox("mdat", "data").substr(0, 10));
    EXPECT_EQ(endOfDescription(cut), cut.size());
}
