// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/HeifItems.h"

#include "platform/linux/media/HeifBoxes.h"
#include "tests/unit/support/IsoBoxes.h"
#include "tests/unit/support/MemoryFile.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::OpenedFile;

constexpr std::uint64_t large = 0x12345;
constexpr std::uint64_t small = 4096;

std::string entry(std::uint64_t item, std::string_view type) {
    return isoBox(
        "infe", ByteWriter().big(2, 1).zeros(3).big(item, 2).zeros(2).text(type).zeros(1).bytes());
}
std::string longEntry(std::uint64_t item, std::string_view type) {
    return isoBox(
        "infe", ByteWriter().big(3, 1).zeros(3).big(item, 4).zeros(2).text(type).zeros(1).bytes());
}

// A file with these items, whose places are written as `places` says.
std::string fileOf(std::string_view items, std::string_view places) {
    const std::string meta =
        std::string(4, '\0')
            .append(isoBox("iinf", ByteWriter().zeros(4).big(1, 2).text(items).bytes()))
            .append(isoBox("iloc", places));
    return isoBox("ftyp", "heic").append(isoBox("meta", meta));
}

// How many lengths are hidden in a file in which those of all pictures are `large`.
std::size_t hiddenIn(const std::string& file) {
    const MemoryFile memory(file);
    std::string changed = file;
    const OpenedFile opened = OpenedFile::of(memory.descriptor()).value();
    const auto meta = platform::media::descriptionOfHeif(opened).meta;
    if (!meta) {
        return 0;
    }
    const auto numbers = platform::media::lengthsOfHeifPictures(opened, *meta);
    platform::media::hideNumbers(numbers, 0, std::as_writable_bytes(std::span(changed)));
    for (const auto& number : numbers) {
        const std::string_view whole = file;
        const auto expected = ByteWriter().big(large, number.size).bytes();
        EXPECT_EQ(whole.substr(number.offset, number.size), expected);
        EXPECT_EQ(changed.substr(number.offset, number.size), std::string(number.size, '\0'));
    }
    return numbers.size();
}

// Numbers of 4 bytes for offsets and lengths, and of items as the version has them.
ByteWriter placesOf(std::uint64_t version, std::uint64_t count) {
    ByteWriter writer;
    writer.big(version, 1).zeros(3).big(0x4400, 2).big(count, version < 2 ? 2 : 4);
    return writer;
}

} // namespace

TEST(HeifItems, SayHowLongTheDataOfPicturesAre) {
    ByteWriter places = placesOf(0, 3);
    for (const std::uint64_t item : {1U, 2U, 3U}) {
        places.big(item, 2).zeros(2).big(2, 2).big(100, 4).big(large, 4).big(200, 4).big(large, 4);
    }
    const std::string items = entry(1, "hvc1") + entry(2, "Exif") + entry(3, "av01");
    EXPECT_EQ(hiddenIn(fileOf(items, places.bytes())), 4U);
    EXPECT_EQ(hiddenIn(fileOf(entry(2, "mime"), places.bytes())), 0U);
    EXPECT_EQ(hiddenIn(fileOf("", places.bytes())), 0U);
}

TEST(HeifItems, MayHaveLongNumbersAndBeElsewhere) {
    ByteWriter places = placesOf(2, 2);
    places.big(70000, 4).big(0, 2).zeros(2).big(1, 2).zeros(4).big(large, 4);
    places.big(70001, 4).big(1, 2).zeros(2).big(1, 2).zeros(4).big(large, 4); // not in the file
    const std::string items = longEntry(70000, "hvc1") + longEntry(70001, "hvc1");
    EXPECT_EQ(hiddenIn(fileOf(items, places.bytes())), 1U);
}

TEST(HeifItems, AreLeftAloneWhereTheirDataAreFew) {
    ByteWriter places = placesOf(1, 1);
    places.big(1, 2).zeros(2).zeros(2).big(1, 2).zeros(4).big(small, 4);
    EXPECT_EQ(hiddenIn(fileOf(entry(1, "hvc1"), places.bytes())), 0U);
}

TEST(HeifItems, EndWhereTheFileIsDamaged) {
    ByteWriter places = placesOf(0, 0xFFFF);
    places.big(1, 2).zeros(2).big(0xFFFF, 2).big(100, 4).big(large, 4);
    const std::string whole = fileOf(entry(1, "hvc1"), places.bytes());
    EXPECT_EQ(hiddenIn(whole), 1U);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_EQ(hiddenIn(whole.substr(0, size)), 0U) << size;
    }
    EXPECT_EQ(hiddenIn(fileOf(isoBox("infe", "\2 short"), places.bytes())), 0U);
    const std::string unknown = ByteWriter().big(3, 1).text(places.bytes().substr(1)).bytes();
    EXPECT_EQ(hiddenIn(fileOf(entry(1, "hvc1"), unknown)), 0U);
}

TEST(HeifItems, AreHiddenInAnyPartOfTheFile) {
    const std::array<platform::media::HeifNumber, 2> numbers{{{2, 4}, {8, 2}}};
    std::string part = "abcdef";
    const auto hide = [&](std::uint64_t offset) {
        part = "abcdef";
        platform::media::hideNumbers(numbers, offset, std::as_writable_bytes(std::span(part)));
        return part;
    };
    using namespace std::string_literals;
    EXPECT_EQ(hide(0), "ab\0\0\0\0"s);
    EXPECT_EQ(hide(4), "\0\0cd\0\0"s);
    EXPECT_EQ(hide(9), "\0bcdef"s);
    EXPECT_EQ(hide(10), "abcdef");
}
