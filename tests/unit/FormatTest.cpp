// SPDX-License-Identifier: Apache-2.0
#include "platform/Format.h"

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace {

using platform::format;
using platform::formatArguments;

TEST(Format, PutsArgumentsInOrder) {
    EXPECT_EQ(format("{} and {}", "a", std::string("b")), "a and b");
    EXPECT_EQ(format("nothing"), "nothing");
    EXPECT_EQ(format("{{{}}}", 1), "{1}");
}

TEST(Format, WritesIntegersOfEverySize) {
    EXPECT_EQ(format("{}", std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(format("{}", std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(format("{:o} {:x}", 0644U, 255U), "644 ff");
}

TEST(Format, BytesOfTextsPassThrough) {
    EXPECT_EQ(format("<{}>", "\xFF{}%s\n"), "<\xFF{}%s\n>");
}

TEST(Format, UncheckedFormatsThatDoNotFitAreRefused) {
    EXPECT_THROW(static_cast<void>(formatArguments("{}", {})), std::invalid_argument);
    EXPECT_THROW(static_cast<void>(formatArguments("{", {})), std::invalid_argument);
}

} // namespace
