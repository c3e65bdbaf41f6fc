// SPDX-License-Identifier: Apache-2.0
#include "platform/Format.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
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

// What the C library makes of a number.
std::string printed(double number, int decimals) {
    std::array<char, 512> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    return {text.data(), static_cast<std::size_t>(length)};
}

TEST(Format, WritesNumbersAsTheCLibraryDoes) {
    EXPECT_EQ(format("{:.0f} {:.1f} {:.4f}", 2.5, 0.25, -48.858449999), "2 0.2 -48.8584");
    EXPECT_EQ(format("1/{:.0f} s", -0.4), "1/-0 s");
    EXPECT_EQ(format("{:.1f}", 1e22), "10000000000000000000000.0");
    std::mt19937_64 random; // NOLINT(cert-msc32-c,cert-msc51-cpp): a failure must come again
#ifdef QM_IS_SANITIZED
    constexpr int rounds = 2'000;
#else
    constexpr int rounds = 20'000;
#endif
    for (int round = 0; round < rounds; ++round) {
        const auto any = std::bit_cast<double>(random());
        if (!std::isnan(any)) {
            ASSERT_EQ(format("{:.1f}", any), printed(any, 1));
        }
        const double small = static_cast<double>(random() % 100'000'000) / 65'536;
        ASSERT_EQ(format("{:.4f}", small), printed(small, 4));
        ASSERT_EQ(format("{:.0f}", small), printed(small, 0));
    }
}

TEST(Format, WritesWhatIsNoFiniteNumber) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(format("{:.0f} {:.1f}", infinity, -infinity), "inf -inf");
    EXPECT_EQ(format("{:.1f} {:.0f}", nan, std::copysign(nan, -1.0)), "nan nan");
}

TEST(Format, BytesOfTextsPassThrough) {
    EXPECT_EQ(format("<{}>", "\xFF{}%s\n"), "<\xFF{}%s\n>");
}

TEST(Format, UncheckedFormatsThatDoNotFitAreRefused) {
    EXPECT_THROW(static_cast<void>(formatArguments("{}", {})), std::invalid_argument);
    EXPECT_THROW(static_cast<void>(formatArguments("{", {})), std::invalid_argument);
}

} // namespace
