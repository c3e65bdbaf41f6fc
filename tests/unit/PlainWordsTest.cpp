// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/PlainWords.h"

#include "platform/Text.h"
#include "platform/linux/WordBreaks.h"

#include <array>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

using platform::leadingPlainWords;
using platform::lengthOfOtherWords;
using platform::wordCountByRules;

// One character or two of each kind that the rules tell apart.
constexpr std::array<const char*, 23> characters{
    "a",      "1",      "_",      " ",      "\n",     "\r",     ".",   "'",
    "\u2019", ",",      ";",      ":",      "-",      "@",      "\"",  "\u00E9",
    "\u0660", "\u0301", "\u05D0", "\u200D", "\u3000", "\u65E5", "\xA9"};

// The sequence of `length` characters with this number, of all that there are.
std::string textWithNumber(std::size_t number, std::size_t length) {
    std::string text;
    for (; length > 0; --length, number /= characters.size()) {
        text += characters[number % characters.size()];
    }
    return text;
}

TEST(PlainWords, AreTheSameAsByAllTheRules) {
    std::size_t texts = 1;
    for (std::size_t length = 0; length <= 4; ++length, texts *= characters.size()) {
        for (std::size_t number = 0; number < texts; ++number) {
            const std::string text = textWithNumber(number, length);
            ASSERT_EQ(platform::Text::wordCount(text), wordCountByRules(text)) << text;
        }
    }
}

TEST(PlainWords, AreTheSameInLongerTexts) {
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts each time
    for (int i = 0; i < 5000; ++i) {
        std::string text;
        while (random() % 12 != 0) {
            text += textWithNumber(random(), random() % 7);
            text.append(random() % 40, 'x');
        }
        ASSERT_EQ(platform::Text::wordCount(text), wordCountByRules(text)) << text;
    }
}

TEST(PlainWords, EndBeforeWhatNeedsTheGeneralRules) {
    const auto plain = leadingPlainWords("one two ab\u0301 c");
    EXPECT_EQ(plain.count, 2U);
    EXPECT_EQ(plain.length, 7U);
    EXPECT_EQ(leadingPlainWords("ab.\u65E5 c").length, 0U);
    EXPECT_EQ(leadingPlainWords("one_two größer\nпривет’s “x”").length,
              std::string("one_two größer\nпривет’s “x”").size());
    EXPECT_EQ(leadingPlainWords("").length, 0U);
}

TEST(PlainWords, OthersEndWherePlainOnesGoOn) {
    const std::string plain(100, 'x');
    EXPECT_EQ(lengthOfOtherWords(plain), 0U);
    EXPECT_EQ(lengthOfOtherWords("\u65E5 " + plain), 3U);
    EXPECT_EQ(lengthOfOtherWords("a \u65E5\n" + plain), 5U);
    EXPECT_EQ(lengthOfOtherWords("\u65E5 a \u65E5 " + plain), 9U);
    EXPECT_EQ(lengthOfOtherWords("\u65E5" + plain), 103U);
    EXPECT_EQ(lengthOfOtherWords(""), 0U);
}

} // namespace
