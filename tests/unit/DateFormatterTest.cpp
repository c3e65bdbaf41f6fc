// SPDX-License-Identifier: Apache-2.0
#include "platform/DateFormatter.h"

#include "tests/unit/support/EnvironmentVariable.h"

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::Date;
using platform::DateFormatter;

constexpr const char* pattern = "yyyy-MM-dd HH:mm:ss";

Date at(std::int64_t seconds) {
    return Date(std::chrono::seconds(seconds));
}

std::string inZone(const char* zone, Date date) {
    static const DateFormatter formatter(pattern);
    const EnvironmentVariable variable("TZ", zone);
    return formatter.stringFromDate(date);
}

std::string inLocale(const char* locale, Date date) {
    const EnvironmentVariable variable("LC_ALL", locale);
    return DateFormatter(pattern).stringFromDate(date);
}

constexpr std::int64_t summer = 1'689'359'405; // 2023-07-14 18:30:05 UTC
constexpr std::int64_t winter = 1'705'257'005; // 2024-01-14 18:30:05 UTC

TEST(DateFormatter, WritesByThePattern) {
    EXPECT_EQ(inZone("UTC", at(summer)), "2023-07-14 18:30:05");
    EXPECT_EQ(inZone("UTC", at(0)), "1970-01-01 00:00:00");
}

TEST(DateFormatter, FollowsChangesOfTheTimeZone) {
    EXPECT_EQ(inZone("Europe/Berlin", at(summer)), "2023-07-14 20:30:05");
    EXPECT_EQ(inZone("Europe/Berlin", at(winter)), "2024-01-14 19:30:05");
    EXPECT_EQ(inZone("Asia/Kolkata", at(summer)), "2023-07-15 00:00:05");
    EXPECT_EQ(inZone("XYZ-3:30", at(summer)), "2023-07-14 22:00:05");
}

TEST(DateFormatter, SecondsArePassedNotRounded) {
    EXPECT_EQ(inZone("UTC", at(summer) + std::chrono::microseconds(999'999)),
              "2023-07-14 18:30:05");
    EXPECT_EQ(inZone("UTC", at(-1) + std::chrono::microseconds(1)), "1969-12-31 23:59:59");
}

TEST(DateFormatter, ReachesFarIntoPastAndFuture) {
    EXPECT_EQ(inZone("UTC", at(-86'400)), "1969-12-31 00:00:00");
    EXPECT_EQ(inZone("UTC", at(4'102'444'800)), "2100-01-01 00:00:00");
    EXPECT_EQ(inZone("America/New_York", at(4'102'444'800)), "2099-12-31 19:00:00");
    EXPECT_FALSE(inZone("UTC", Date::min()).empty());
    EXPECT_FALSE(inZone("UTC", Date::max()).empty());
}

TEST(DateFormatter, DigitsAndCalendarAreTheLocales) {
    EXPECT_EQ(inLocale("de_DE.UTF-8", at(summer)), "2023-07-14 18:30:05");
    EXPECT_EQ(inLocale("C", at(summer)), "2023-07-14 18:30:05");
    EXPECT_EQ(inLocale("ar_EG.UTF-8", at(summer)), "٢٠٢٣-٠٧-١٤ ١٨:٣٠:٠٥");
    EXPECT_EQ(inLocale("th_TH.UTF-8", at(summer)), "2566-07-14 18:30:05");
    EXPECT_EQ(inLocale("no-such-locale-at-all", at(summer)), "2023-07-14 18:30:05");
}

TEST(DateFormatter, ServesSeveralThreads) {
    const DateFormatter formatter(pattern);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&formatter, i] {
            const std::string day = std::to_string(i + 1);
            for (int round = 0; round < 200; ++round) {
                EXPECT_EQ(formatter.stringFromDate(at(std::int64_t{86'400} * i)),
                          "1970-01-0" + day + " 00:00:00");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
