// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/TextString.h"

#include "platform/linux/Utf8.h"

#include <gtest/gtest.h>

namespace {

using platform::pdf::textOfString;
using namespace std::string_view_literals;

constexpr std::size_t longest = 40U << 10U;

TEST(TextString, IsInPDFDocEncodingWithoutAMark) {
    EXPECT_EQ(textOfString(""), "");
    EXPECT_EQ(textOfString("A\t\r\nb ~"), "A\t\r\nb ~");
    EXPECT_EQ(textOfString("\xA1\xFC\xFF"), "¡üÿ");
    EXPECT_EQ(textOfString("\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F"), "˘ˇˆ˙˝˛˚˜");
    EXPECT_EQ(textOfString("\x80\x81\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8D\x8E\x8F"),
              "•†‡…—–ƒ⁄‹›−‰„“”‘");
    EXPECT_EQ(textOfString("\x90\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9D\x9E\xA0"),
              "’‚™ﬁﬂŁŒŠŸŽıłœšž€");
    EXPECT_EQ(textOfString("\x7F\x9F\xAD"), "\uFFFD\uFFFD\uFFFD");
}

TEST(TextString, IsUnicodeWithAMark) {
    EXPECT_EQ(textOfString("\xFE\xFF\0G\0\xFC\xD8\x3D\xDE\0"sv), "Gü😀");
    EXPECT_EQ(textOfString("\xFF\xFEG\0\xFC\0\x3D\xD8\0\xDE"sv), "Gü😀");
    EXPECT_EQ(textOfString("\xEF\xBB\xBFG\xC3\xBC\xF0\x9F\x98\x80"sv), "Gü😀");
    EXPECT_EQ(textOfString("\xFE\xFF"sv), "");
    EXPECT_EQ(textOfString("\xEF\xBB"sv), "ï»");
}

TEST(TextString, ReplacesWhatIsNoCharacter) {
    EXPECT_EQ(textOfString("\xFE\xFF\xD8\x3D\0Ax"sv), "\uFFFDA");
    EXPECT_EQ(textOfString("\xEF\xBB\xBF\xFFg"sv), "\uFFFDg");
}

TEST(TextString, EndsBeforeTheFirstNul) {
    EXPECT_EQ(textOfString("Title\0\0"sv), "Title");
    EXPECT_EQ(textOfString("a\0b"sv), "a");
    EXPECT_EQ(textOfString("\xFE\xFF\0a\0\0\0b"sv), "a");
    EXPECT_EQ(textOfString("\xEF\xBB\xBF"
                           "a\0b"sv),
              "a");
}

TEST(TextString, HasAnEndInTheMiddleOfNoCharacter) {
    EXPECT_EQ(textOfString(std::string(longest, 'a')).size(), longest);
    EXPECT_EQ(textOfString(std::string(longest * 9, 'a')).size(), longest);
    for (const std::string_view mark : {"", "a", "aa", "\xEF\xBB\xBF", "\xFE\xFF", "\xFF\xFE"}) {
        const std::string text = textOfString(std::string(mark).append(longest * 9, '\x80'));
        EXPECT_TRUE(platform::isUTF8(text));
        EXPECT_LE(text.size(), longest);
        EXPECT_GT(text.size(), longest - 4);
    }
}

} // namespace
