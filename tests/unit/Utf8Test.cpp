// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Utf8.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using platform::isUTF8;
using platform::replacingInvalidUTF8;

const std::string valid("a\0\x7F\xC2\x80\xED\x9F\xBF\xEF\xBF\xBF\xF4\x8F\xBF\xBF", 15);

TEST(Utf8, AcceptsEveryCharacter) {
    EXPECT_TRUE(isUTF8(""));
    EXPECT_TRUE(isUTF8(valid));
}

TEST(Utf8, RefusesWhatIsNoCharacter) {
    for (const char* const text :
         {"\x80", "\xFF", "a\xC3", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
          "\xE2\x82", "\xF0\x9F\x98 "}) {
        EXPECT_FALSE(isUTF8(text));
    }
}

TEST(Utf8, ReplacesEachLongestBeginningOfACharacter) {
    EXPECT_EQ(replacingInvalidUTF8(valid), valid);
    EXPECT_EQ(replacingInvalidUTF8(""), "");
    EXPECT_EQ(replacingInvalidUTF8("a\xFF\xFEz"), "a\uFFFD\uFFFDz");
    EXPECT_EQ(replacingInvalidUTF8("\xE2\x82"), "\uFFFD");
    EXPECT_EQ(replacingInvalidUTF8("\xE2\x82\xFFx\xC3"), "\uFFFD\uFFFDx\uFFFD");
    EXPECT_EQ(replacingInvalidUTF8("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_TRUE(isUTF8(replacingInvalidUTF8("\xF0\x9F\x98\xC0\x80")));
}

} // namespace
