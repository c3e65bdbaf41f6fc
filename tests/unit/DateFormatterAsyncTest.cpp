// SPDX-License-Identifier: Apache-2.0
#include "platform/DateFormatter.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::Date;
using platform::DateFormatter;

TEST(DateFormatterAsync, ServesSeveralThreads) {
    const DateFormatter parser("yyyy:MM:dd HH:mm:ss", "en_US_POSIX");
    const DateFormatter display = DateFormatter::mediumDateAndShortTime();
    std::vector<std::jthread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&parser, &display, i] {
            const std::string day = std::to_string(i + 1);
            const Date expected(std::chrono::days(i) + std::chrono::hours(13));
            for (int round = 0; round < 200; ++round) {
                EXPECT_EQ(parser.dateFromString("1970:01:0" + day + " 13:00:00"), expected);
                EXPECT_EQ(display.stringFromDate(expected),
                          "Jan " + day + ", 1970 at 1:00\u202FPM");
            }
        });
    }
}

} // namespace
