// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/PropertyText.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using platform::hdiutil::propertyText;

TEST(PropertyText, KeepsWhatXmlAllows) {
    const std::string text = "a<&>\"\t\n\r Ü 日 😀 \x7F\uFFFD";
    EXPECT_EQ(propertyText(text), text);
    EXPECT_EQ(propertyText(""), "");
}

TEST(PropertyText, ReplacesWhatXmlExcludes) {
    EXPECT_EQ(propertyText(std::string("a\0b\x1F", 4)), "a\uFFFDb\uFFFD");
    EXPECT_EQ(propertyText("\xEF\xBF\xBE\xEF\xBF\xBF!"), "\uFFFD\uFFFD!");
    EXPECT_EQ(propertyText("\xFF\xC3"), "\uFFFD\uFFFD");
}

} // namespace
