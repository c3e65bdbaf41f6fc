// SPDX-License-Identifier: Apache-2.0
#include "platform/Text.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

namespace Text = platform::Text;
using platform::bytesOf;

TEST(Text, ReadsUTF8AsItStands) {
    const std::string text("\uFEFFa\0\r\n\u00E9\U0001F600", 13);
    EXPECT_EQ(Text::fromUTF8(bytesOf(text)), text);
    EXPECT_EQ(Text::fromUTF8({}), "");
}

TEST(Text, RefusesWhatIsNotUTF8) {
    for (const char* const bytes : {"\xE9", "ab\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80"}) {
        EXPECT_EQ(Text::fromUTF8(bytesOf(bytes)), std::nullopt);
        // Behind much that is plain, too.
        EXPECT_EQ(Text::fromUTF8(bytesOf(std::string(1000, 'x') + bytes)), std::nullopt);
        EXPECT_EQ(Text::fromUTF8(bytesOf(bytes + std::string(1000, 'x'))), std::nullopt);
    }
}

TEST(Text, EveryByteIsACharacterOfLatin1) {
    std::string bytes;
    std::string characters;
    for (int number = 0; number < 256; ++number) {
        bytes.push_back(static_cast<char>(number));
        if (number < 128) {
            characters.push_back(static_cast<char>(number));
        } else {
            characters.push_back(static_cast<char>(192 + number / 64));
            characters.push_back(static_cast<char>(128 + number % 64));
        }
    }
    EXPECT_EQ(Text::fromISOLatin1(bytesOf(bytes)), characters);
    EXPECT_EQ(Text::fromISOLatin1(bytesOf("caf\xE9")), "café");
    EXPECT_EQ(Text::fromISOLatin1({}), "");
}

TEST(Text, NamesEncodings) {
    EXPECT_EQ(Text::localizedNameOfEncoding(Text::Encoding::UTF8), "Unicode (UTF-8)");
    EXPECT_EQ(Text::localizedNameOfEncoding(Text::Encoding::ISOLatin1), "Western (ISO Latin 1)");
}

TEST(Text, LengthIsInUnitsOfUTF16) {
    EXPECT_EQ(Text::lengthInUTF16(""), 0U);
    EXPECT_EQ(Text::lengthInUTF16(std::string("a\0\r\n", 4)), 4U);
    EXPECT_EQ(Text::lengthInUTF16("\u007F\u0080\u07FF\u0800\uFFFF"), 5U);
    EXPECT_EQ(Text::lengthInUTF16("\U00010000\U0010FFFF"), 4U);
}

using Case = std::pair<const char*, std::size_t>;

TEST(Text, CountsWords) {
    constexpr std::array<Case, 33> cases{{
        {"", 0},
        {"don't stop", 2},
        {"don’t", 1},
        {"it's 'quoted'", 2},
        {"rock'n'roll o'clock '90s 5'", 4},
        {"well-known e-mail", 4},
        {"foo_bar __init__ _ a_ _a", 4},
        {"3.14 1,234.56 50% $5", 4},
        {"1/2 10:30 2023-07-14", 7},
        {"v1.2.3 1.0f 0x1F 10e5", 4},
        {"http://www.example.org/foo?x=1#y", 6},
        {"C++ C# .NET", 3},
        {"a.b.c U.S.A. e.g.", 3},
        {"key:value std::vector", 4},
        {"x=y+z", 3},
        {"int main(void) { return 0; }", 5},
        {"#include <stdio.h>", 2},
        {"<b>bold</b>", 3},
        {"été naïve", 2},
        {"e\u0301te\u0301 nai\u0308ve", 2},
        {"привет мир", 2},
        {"한국어 단어", 2},
        {"ア_イ カタカナ", 2},
        {"\U0001F600 \U0001F1E9\U0001F1EA \U0001F468\u200D\U0001F469\u200D\U0001F467 ***", 0},
        {"1\uFE0F\u20E3", 1},
        {"co\u00ADop", 1},
        {"a\u200Bb", 2},
        {"a\u00A0b", 2},
        {"a\rb\r\nc\nd\u2028e\u2029f\u0085g", 7},
        {"\uFEFFhello", 1},
        {"_", 0},
        {"x _ y ; , . '", 2},
        {"1.2.a 1;2 a,b 1._2", 7},
    }};
    for (const auto& [text, count] : cases) {
        EXPECT_EQ(Text::wordCount(text), count) << text;
    }
}

TEST(Text, PartsWordsByDictionaries) {
    constexpr std::array<Case, 3> cases{
        {{"日本語を勉強する", 4}, {"我爱北京天安门", 4}, {"สวัสดีชาวโลก", 3}}};
    for (const auto& [text, count] : cases) {
        EXPECT_EQ(Text::wordCount(text), count) << text;
    }
}

TEST(Text, CountsWordsAroundCharactersThatAreNone) {
    EXPECT_EQ(Text::wordCount(std::string("a\0b\0\0c", 6)), 3U);
    EXPECT_EQ(Text::wordCount("\x01 a\x7F"
                              "b"),
              2U);
}

TEST(Text, CountsIllFormedTextWithoutHarm) {
    for (const char* const text :
         {"\xC3", "a\xE2\x80", "\xE2", "\xFF\xFE", "a b\xC3 c \x80", "_\xF0"}) {
        EXPECT_TRUE(Text::wordCount(text));
        EXPECT_LE(Text::lengthInUTF16(text), 2 * std::string(text).size());
    }
}

TEST(Text, CountsTheSameInEveryLocationOfALongText) {
    const std::string line = "plain words here, größer 日本 and привет’s end.\n";
    const std::size_t once = Text::wordCount(line).value_or(0);
    std::string text;
    for (int i = 0; i < 500; ++i) {
        text += line;
    }
    EXPECT_EQ(once, 8U);
    EXPECT_EQ(Text::wordCount(text), 500 * once);
}

} // namespace
