// SPDX-License-Identifier: Apache-2.0
#include "platform/Collation.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using platform::Collation::localizedCaseInsensitiveCompare;
using platform::Collation::lowercase;

TEST(Collation, CaseMakesNoDifference) {
    EXPECT_EQ(localizedCaseInsensitiveCompare("README", "readme"), std::weak_ordering::equivalent);
    EXPECT_EQ(localizedCaseInsensitiveCompare("a", "B"), std::weak_ordering::less);
    EXPECT_EQ(localizedCaseInsensitiveCompare("A", "b"), std::weak_ordering::less);
    EXPECT_EQ(localizedCaseInsensitiveCompare("B", "a"), std::weak_ordering::greater);
}

TEST(Collation, AccentsMakeADifferenceAfterTheLetters) {
    EXPECT_EQ(localizedCaseInsensitiveCompare("a", "ä"), std::weak_ordering::less);
    EXPECT_EQ(localizedCaseInsensitiveCompare("äa", "ab"), std::weak_ordering::less);
}

TEST(Collation, TakesAnyBytes) {
    EXPECT_EQ(localizedCaseInsensitiveCompare("", ""), std::weak_ordering::equivalent);
    EXPECT_EQ(localizedCaseInsensitiveCompare("\xFF\xFE", "\xFF\xFE"),
              std::weak_ordering::equivalent);
    EXPECT_EQ(localizedCaseInsensitiveCompare("", "a"), std::weak_ordering::less);
}

TEST(Collation, LowercaseKnowsEveryAlphabet) {
    EXPECT_EQ(lowercase("ABC-xyz.9"), "abc-xyz.9");
    EXPECT_EQ(lowercase("ÄÖÜ ПРИВЕТ"), "äöü привет");
    EXPECT_EQ(lowercase("I"), "i");
    EXPECT_EQ(lowercase(""), "");
}

TEST(Collation, LowercaseLosesNoByteOfOtherTexts) {
    EXPECT_EQ(lowercase("A\xFF\xC3"), "a\xFF\xC3");
    EXPECT_EQ(lowercase("\xC3\x84\xFF"), "\xC3\x84\xFF");
}

} // namespace
