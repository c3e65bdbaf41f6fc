// SPDX-License-Identifier: Apache-2.0
#include "platform/PropertyList.h"

#include "platform/linux/PropertyListGuard.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::bytesOf;
using platform::Data;
using platform::PropertyList;
using platform::PropertyListGuard::isSafeBinary;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using Format = PropertyList::Format;

std::optional<PropertyList> parse(std::string_view text) {
    return PropertyList::parse(bytesOf(text));
}

std::optional<PropertyList> rewritten(const PropertyList& list, Format format) {
    return PropertyList::parse(list.serialized(format));
}

std::string bigEndian(std::uint64_t value, std::size_t width) {
    std::string text(width, '\0');
    for (std::size_t i = width; i > 0; --i) {
        text[i - 1] = static_cast<char>(value & 0xFFU);
        value >>= 8U;
    }
    return text;
}

/// A binary property list of these objects, the first of which is the top one.
std::string binary(const std::vector<std::string>& objects, std::size_t referenceSize = 1) {
    std::string file = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += bigEndian(file.size(), 4);
        file += object;
    }
    const std::size_t tablePlace = file.size();
    file += table;
    file += std::string(6, '\0') + '\4' + static_cast<char>(referenceSize);
    file += bigEndian(objects.size(), 8) + bigEndian(0, 8) + bigEndian(tablePlace, 8);
    return file;
}

std::string xml(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + body +
           "</plist>";
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

/// `depth` arrays, each in the one before.
std::string nestedArrays(std::size_t depth) {
    std::vector<std::string> objects;
    for (std::size_t i = 1; i < depth; ++i) {
        objects.push_back(std::string("\xA1").append(bigEndian(i, 4)));
    }
    objects.emplace_back("\xA0");
    return binary(objects, 4);
}

const std::vector<PropertyList> everyKind{
    PropertyList::Value(true),
    PropertyList::Value(false),
    std::int64_t{0},
    std::int64_t{-1},
    std::numeric_limits<std::int64_t>::max(),
    std::numeric_limits<std::int64_t>::min(),
    PropertyList::Value(1.5),
    "",
    "text <&> \"grün\" 日本 \xF0\x9F\x98\x80",
    Data{},
    Data{std::byte{0}, std::byte{255}, std::byte{10}},
    PropertyList::Value(PropertyList::AbsoluteTime{-86'400}),
    Array{},
    Array{std::int64_t{1}, "two", Array{"three"}},
    Dictionary{},
    Dictionary{{"", "empty key"}, {"b", Array{}}, {"ä", Dictionary{{"x", "y"}}}},
};

TEST(PropertyList, BinaryFormKeepsEveryKind) {
    for (std::size_t i = 0; i < everyKind.size(); ++i) {
        EXPECT_EQ(rewritten(everyKind[i], Format::binary), everyKind[i]) << i;
    }
    EXPECT_EQ(rewritten(PropertyList::UID{7}, Format::binary), PropertyList(PropertyList::UID{7}));
}

TEST(PropertyList, XMLFormKeepsEveryKind) {
    for (std::size_t i = 0; i < everyKind.size(); ++i) {
        EXPECT_EQ(rewritten(everyKind[i], Format::xml), everyKind[i]) << i;
    }
}

TEST(PropertyList, FormsAreWhatTheyAreCalled) {
    const PropertyList list = Array{"x"};
    const Data binaryForm = list.serialized(Format::binary);
    const Data xmlForm = list.serialized(Format::xml);
    ASSERT_GT(binaryForm.size(), 8U);
    EXPECT_TRUE(
        std::equal(binaryForm.begin(), binaryForm.begin() + 8, bytesOf("bplist00").begin()));
    ASSERT_GT(xmlForm.size(), 5U);
    EXPECT_TRUE(std::equal(xmlForm.begin(), xmlForm.begin() + 5, bytesOf("<?xml").begin()));
}

TEST(PropertyList, ReadsWhatOthersWrite) {
    EXPECT_EQ(parse(xml("<array><string>Red\n6</string><true/><integer>5</integer></array>")),
              PropertyList(Array{"Red\n6", PropertyList::Value(true), std::int64_t{5}}));
    EXPECT_EQ(parse(binary({std::string("\xA2\1\2"),
                            "\x53"
                            "abc",
                            "\x10\x07"})),
              PropertyList(Array{"abc", std::int64_t{7}}));
    EXPECT_EQ(parse(binary({std::string("\x62\0a\0b", 5)})), PropertyList("ab"));
}

TEST(PropertyList, AccessorsAnswerForTheirKindOnly) {
    const PropertyList list = Dictionary{{"a", "b"}};
    EXPECT_NE(list.dictionary(), nullptr);
    EXPECT_EQ(list.array(), nullptr);
    EXPECT_EQ(list.string(), nullptr);
    ASSERT_NE(list.valueForKey("a"), nullptr);
    EXPECT_EQ(*list.valueForKey("a")->string(), "b");
    EXPECT_EQ(list.valueForKey("c"), nullptr);
    EXPECT_EQ(PropertyList("a").valueForKey("a"), nullptr);
}

TEST(PropertyList, OtherBytesAreRefused) {
    for (const char* text : {"", "x", "bplist", "bplist00", "<plist>", "{\"a\":1}", "<?xml?>"}) {
        EXPECT_EQ(parse(text), std::nullopt) << text;
    }
}

TEST(PropertyList, EveryTruncationIsRefused) {
    const std::string whole = binary({std::string("\xA2\1\2"),
                                      "\x53"
                                      "abc",
                                      "\x10\x07"});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_EQ(parse(whole.substr(0, size)), std::nullopt) << size;
    }
}

TEST(PropertyList, AnyFlippedByteIsSurvived) {
    const std::string whole = binary({std::string("\xA2\1\2"),
                                      "\x53"
                                      "abc",
                                      "\x10\x07"});
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char value : {'\0', '\1', '\x7F', '\x80', '\xFF'}) {
            std::string damaged = whole;
            damaged[at] = value;
            static_cast<void>(parse(damaged));
        }
    }
}

TEST(PropertyList, DeepNestingIsRefused) {
    EXPECT_TRUE(parse(nestedArrays(128)));
    EXPECT_FALSE(parse(nestedArrays(129)));
    EXPECT_FALSE(parse(nestedArrays(100'000)));
    EXPECT_TRUE(parse(xml(repeated("<array>", 128) + repeated("</array>", 128))));
    EXPECT_FALSE(parse(xml(repeated("<array>", 129) + repeated("</array>", 129))));
    EXPECT_FALSE(parse(xml(repeated("<array>", 1'000'000))));
    EXPECT_FALSE(parse(xml(repeated("<dict><key>a</key>", 1'000'000))));
}

TEST(PropertyList, NestingIsNotHiddenByWhatIsNoEndOfIt) {
    for (const char* level :
         {"<array><!--</array>-->", "<array><!--></array>-->", "<array a=\"</array>\">",
          "<array a=\"></array>\">", "<array><?x </array>?>", "<array><?x ></array>?>",
          "<array><?x \"?></array>\"?>", "<array><?></array>?>", "<array><!D a [</array>]>",
          "<array><!DOCTYPE \"></array>\">", "<array><string><![CDATA[</array>]]></string>"}) {
        EXPECT_FALSE(parse(xml(repeated(level, 300'000)))) << level;
    }
}

TEST(PropertyList, CommentsAndVerbatimTextsMayHoldAnything) {
    EXPECT_TRUE(parse(xml("<array><!-- <array> -- \" </dict> --></array>")));
    EXPECT_EQ(parse(xml("<string><![CDATA[<array>\"]]></string>")), PropertyList("<array>\""));
}

TEST(PropertyList, ManySiblingsAreNoNesting) {
    EXPECT_TRUE(parse(xml("<array>" + repeated("<array></array><dict/>", 10'000) + "</array>")));
}

TEST(PropertyList, CyclesAreRefused) {
    const std::string toTheFirst("\xA1\0", 2);
    for (const std::string& bytes : {binary({toTheFirst}), binary({"\xA1\1", toTheFirst})}) {
        EXPECT_FALSE(parse(bytes));
        // Also by ours alone, whatever the library makes of it.
        EXPECT_FALSE(isSafeBinary(bytesOf(bytes)));
    }
}

TEST(PropertyList, ValuesThatGrowOutOfProportionAreRefused) {
    // Each array holds the next one ten times: some hundred bytes, 10^20 values.
    std::vector<std::string> objects;
    for (char i = 1; i <= 20; ++i) {
        objects.push_back(std::string("\xAA").append(10, i));
    }
    objects.emplace_back("\xA0");
    EXPECT_FALSE(parse(binary(objects)));
}

TEST(PropertyList, LengthsBeyondTheFileAreRefused) {
    const std::string hugeLength = std::string("\x13\x7F").append(7, '\xFF');
    for (const char marker : {'\x4F', '\x5F', '\x6F', '\xAF', '\xDF'}) {
        EXPECT_FALSE(parse(binary({std::string(1, marker).append(hugeLength)})));
    }
}

TEST(PropertyList, LengthsAreIntegersOfUpToEightBytes) {
    EXPECT_EQ(parse(binary({std::string("\x5F\x10\3abc")})), PropertyList("abc"));
    EXPECT_EQ(parse(binary({std::string("\x5F\x13\0\0\0\0\0\0\0\3abc", 13)})), PropertyList("abc"));
    // Of sixteen bytes, and what is no integer.
    const auto isSafe = [](const std::string& object) {
        return isSafeBinary(bytesOf(binary({object})));
    };
    EXPECT_FALSE(isSafe(std::string("\x5F\x14").append(15, '\0').append("\3abc")));
    EXPECT_FALSE(isSafe("\x5F\x50\3abc"));
    EXPECT_FALSE(isSafe("\x5F\x20\3abc"));
}

// The table of offsets, of one byte each, could pass for what the last object lacks.
TEST(PropertyList, ObjectsEndBeforeTheTable) {
    const auto isSafe = [](std::string_view object, std::size_t place) {
        const std::string objects = std::string("bplist00").append(place - 8, '\0').append(object);
        std::string bytes = objects + static_cast<char>(place);
        bytes.append(6, '\0').append("\1\1").append(bigEndian(1, 8)).append(bigEndian(0, 8));
        return isSafeBinary(bytesOf(bytes.append(bigEndian(objects.size(), 8))));
    };
    EXPECT_TRUE(isSafe("\x4F\x10\1x", 16));
    EXPECT_FALSE(isSafe("\x4F\x10\1", 16));
    EXPECT_FALSE(isSafe("\x4F\x10", 16));
    EXPECT_FALSE(isSafe("\x4F", 16));
    EXPECT_FALSE(isSafe("\x41", 16));
}

TEST(PropertyList, ReferencesToNothingAreRefused) {
    EXPECT_FALSE(parse(binary({"\xA1\5"})));
    EXPECT_FALSE(parse(binary({})));
}

TEST(PropertyList, TextsWithANulAreRefused) {
    EXPECT_FALSE(parse(binary({std::string("\x53"
                                           "a\0b",
                                           4)})));
    EXPECT_FALSE(parse(binary({std::string("\x62\0a\0\0", 5)})));
    EXPECT_FALSE(parse(binary({"\xD1\1\2",
                               std::string("\x52"
                                           "k\0",
                                           3),
                               "\x51v"})));
    EXPECT_FALSE(parse(xml(std::string("<string>a\0b</string>", 20))));
    // A character whose low byte alone is zero is none.
    EXPECT_EQ(parse(binary({std::string("\x61\1\0", 3)})), PropertyList("Ā"));
}

TEST(PropertyList, TextsThatAreNotUTF8AreRefused) {
    EXPECT_FALSE(parse(binary({"\x52"
                               "a\xFF"})));
    EXPECT_FALSE(parse(binary({"\xD1\1\2",
                               "\x52"
                               "k\xFF",
                               "\x51v"})));
    EXPECT_FALSE(parse(xml("<string>\xC3</string>")));
}

TEST(PropertyList, NulAsACharacterReferenceIsSurvived) {
    static_cast<void>(parse(xml("<string>a&#0;b&#x0;c</string>")));
}

TEST(PropertyList, UnfinishedTagsTakeNoTimeToSpeakOf) {
    // With a search to the end of the text for each, this takes minutes.
    EXPECT_FALSE(parse(repeated("<dict</dict", 1'000'000)));
}

TEST(PropertyList, MoreThanTheLimitIsRefused) {
    const std::string body(std::size_t{17} << 20, 'x');
    EXPECT_FALSE(parse(xml("<string>" + body + "</string>")));
}

TEST(PropertyList, WhatCannotBeWrittenGivesNoBytes) {
    EXPECT_TRUE(PropertyList("\xFF").serialized(Format::binary).empty());
    EXPECT_TRUE(PropertyList(std::string("a\0b", 3)).serialized(Format::xml).empty());
    EXPECT_TRUE(PropertyList(Dictionary{{"\xFF", "x"}}).serialized(Format::binary).empty());
    const PropertyList farDate = PropertyList::Value(PropertyList::AbsoluteTime{1e12});
    EXPECT_TRUE(farDate.serialized(Format::binary).empty());
    PropertyList deep = Array{};
    for (int i = 0; i < 200; ++i) {
        deep = Array{deep};
    }
    EXPECT_TRUE(deep.serialized(Format::binary).empty());
}

} // namespace
