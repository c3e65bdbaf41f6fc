// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Utf16.h"

#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::utf8FromUtf16;
using namespace std::string_view_literals;

std::string little(std::string_view bytes) {
    return utf8FromUtf16(std::as_bytes(std::span(bytes)), std::endian::little);
}

TEST(Utf16, BecomesUtf8OfEveryLength) {
    EXPECT_EQ(little("A\0\xFC\0\xAC\x20\x3D\xD8\x00\xDE"sv), "A\u00FC\u20AC\U0001F600");
    EXPECT_EQ(little("\xFF\xFF\xFF\xDB\xFF\xDF"sv), "\uFFFF\U0010FFFF");
    EXPECT_EQ(utf8FromUtf16(std::as_bytes(std::span("\0A\x20\xAC"sv)), std::endian::big),
              "A\u20AC");
}

TEST(Utf16, EndsWithTheFieldOrTheFirstNul) {
    EXPECT_EQ(little("A\0\0\0B\0"sv), "A");
    EXPECT_EQ(little("A\0B"sv), "A");
    EXPECT_EQ(little(""sv), "");
}

TEST(Utf16, ReplacesHalvesOfCharacters) {
    EXPECT_EQ(little("\x3D\xD8"sv), "\uFFFD");
    EXPECT_EQ(little("\x3D\xD8"
                     "A\0"sv),
              "\uFFFDA");
    EXPECT_EQ(little("\x00\xDE\x3D\xD8\x3D\xD8\x00\xDE"sv), "\uFFFD\uFFFD\U0001F600");
}

} // namespace
