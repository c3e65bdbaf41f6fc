// SPDX-License-Identifier: Apache-2.0
#include "platform/DateFormatter.h"

#include "tests/unit/support/EnvironmentVariable.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

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

TEST(DateFormatter, MediumDateAndShortTimeFollowTheLocale) {
    const auto inCustomsOf = [](const char* locale) {
        const EnvironmentVariable variable("LC_ALL", locale);
        return DateFormatter::mediumDateAndShortTime().stringFromDate(at(summer));
    };
    EXPECT_EQ(inCustomsOf("en_US.UTF-8"), "Jul 14, 2023 at 6:30\u202FPM");
    EXPECT_EQ(inCustomsOf("C"), "Jul 14, 2023 at 6:30\u202FPM");
    EXPECT_EQ(inCustomsOf("en_GB.UTF-8"), "14 Jul 2023 at 18:30");
    EXPECT_EQ(inCustomsOf("de_DE.UTF-8"), "14.07.2023, 18:30");
    EXPECT_EQ(inCustomsOf("fr_FR.UTF-8"), "14 juil. 2023 à 18:30");
    EXPECT_EQ(inCustomsOf("it_IT.UTF-8"), "14 lug 2023, 18:30");
    EXPECT_EQ(inCustomsOf("nl_NL.UTF-8"), "14 jul 2023, 18:30");
    EXPECT_EQ(inCustomsOf("pt_BR.UTF-8"), "14 de jul. de 2023, 18:30");
    EXPECT_EQ(inCustomsOf("ja_JP.UTF-8"), "2023/07/14 18:30");
    EXPECT_EQ(inCustomsOf("zh_CN.UTF-8"), "2023年7月14日 18:30");
    EXPECT_EQ(inCustomsOf("ko_KR.UTF-8"), "2023. 7. 14. 오후 6:30");
    EXPECT_EQ(inCustomsOf("th_TH.UTF-8"), "14 ก.ค. 2566 18:30");
}

TEST(DateFormatter, MediumDateAndShortTimeFollowTheTimeZone) {
    const EnvironmentVariable locale("LC_ALL", "de_DE.UTF-8");
    const DateFormatter formatter = DateFormatter::mediumDateAndShortTime();
    const auto inZoneNamed = [&formatter](const char* zone) {
        const EnvironmentVariable variable("TZ", zone);
        return formatter.stringFromDate(at(summer));
    };
    EXPECT_EQ(inZoneNamed("UTC"), "14.07.2023, 18:30");
    EXPECT_EQ(inZoneNamed("Asia/Kolkata"), "15.07.2023, 00:00");
    EXPECT_EQ(inZoneNamed("America/New_York"), "14.07.2023, 14:30");
}

constexpr const char* exifPattern = "yyyy:MM:dd HH:mm:ss";

// Seconds since 1970; nullopt when the text is no date.
std::optional<std::int64_t> read(std::string_view text, const char* zone = "UTC") {
    static const DateFormatter formatter(exifPattern, "en_US_POSIX");
    const EnvironmentVariable variable("TZ", zone);
    const auto date = formatter.dateFromString(text);
    EXPECT_EQ(date, date ? std::optional(std::chrono::floor<std::chrono::seconds>(*date)) : date);
    return date ? std::optional(date->time_since_epoch() / std::chrono::seconds(1)) : std::nullopt;
}

TEST(DateFormatter, ReadsDates) {
    EXPECT_EQ(read("2023:07:14 18:30:05"), summer);
    EXPECT_EQ(read("1970:01:01 00:00:00"), 0);
    EXPECT_EQ(read("1969:12:31 23:59:59"), -1);
    EXPECT_EQ(read("2024:02:29 00:00:00"), 1'709'164'800);
    EXPECT_EQ(read("0001:01:01 00:00:00"), -62'135'769'600); // of the Julian calendar
}

TEST(DateFormatter, ReadsDatesInTheTimeZoneOfTheMoment) {
    EXPECT_EQ(read("2023:07:14 20:30:05", "Europe/Berlin"), summer);
    EXPECT_EQ(read("2024:01:14 19:30:05", "Europe/Berlin"), winter);
    EXPECT_EQ(read("2023:07:15 00:00:05", "Asia/Kolkata"), summer);
    EXPECT_EQ(read("2023:07:14 22:00:05", "XYZ-3:30"), summer);
}

TEST(DateFormatter, WhatIsNoDateIsNotRead) {
    for (const char* const text : {"0000:00:00 00:00:00",
                                   "0000:01:01 00:00:00",
                                   "2023:13:01 00:00:00",
                                   "2023:00:01 00:00:00",
                                   "2023:02:30 00:00:00",
                                   "2023:02:29 00:00:00",
                                   "2023:07:14 24:00:00",
                                   "2023:07:14 23:60:00",
                                   "2023:07:14 23:59:60",
                                   "2023:07:14 18:30:05Z",
                                   "2023:07:14 18:30:05 ",
                                   "2023:07:14 18:30:05+02:00",
                                   "2023:07:14 18:30:05.50",
                                   "2023:07:14 18:30",
                                   "2023:07:14",
                                   "2023-07-14 18:30:05",
                                   "2023:07:14T18:30:05",
                                   "2023:7:4 8:3:5",
                                   "-2023:07:14 18:30:05",
                                   "20230714183005",
                                   "",
                                   " ",
                                   "    :  :     :  :  ",
                                   "last summer",
                                   "2023:07:14 18:30:05\xFF"}) {
        EXPECT_EQ(read(text), std::nullopt) << text;
    }
    EXPECT_EQ(read(std::string_view("2023:07:14 18:30:05\0", 20)), std::nullopt);
    EXPECT_EQ(read(std::string(100'000, '1') + ":07:14 18:30:05"), std::nullopt);
}

TEST(DateFormatter, DigitsOfOtherScriptsAndBlanksInFrontAreRead) {
    EXPECT_EQ(read("２０２３:07:14 18:30:05"), summer);
    EXPECT_EQ(read(" 2023:07: 14  18:30:05"), summer);
}

TEST(DateFormatter, YearsBeyondReachAreNotRead) {
    EXPECT_EQ(read("9999:12:31 23:59:59"), 253'402'300'799);
    EXPECT_EQ(read("999999:01:01 00:00:00"), std::nullopt);
    EXPECT_EQ(read("99999999999999999999:01:01 00:00:00"), std::nullopt);
}

TEST(DateFormatter, TimesThatTheClocksSkipAreNotRead) {
    EXPECT_EQ(read("2023:03:26 01:59:59", "Europe/Berlin"), 1'679'792'399);
    EXPECT_EQ(read("2023:03:26 02:00:00", "Europe/Berlin"), std::nullopt);
    EXPECT_EQ(read("2023:03:26 02:59:59", "Europe/Berlin"), std::nullopt);
    EXPECT_EQ(read("2023:03:26 03:00:00", "Europe/Berlin"), 1'679'792'400);
    EXPECT_EQ(read("2011:12:30 12:00:00", "Pacific/Apia"), std::nullopt);
    EXPECT_EQ(read("2011:12:31 00:00:00", "Pacific/Apia"), 1'325'239'200);
}

TEST(DateFormatter, TimesThatTheClocksShowTwiceAreTheFirst) {
    EXPECT_EQ(read("2023:10:29 02:30:00", "Europe/Berlin"), 1'698'539'400);
    EXPECT_EQ(read("2023:10:29 03:00:00", "Europe/Berlin"), 1'698'544'800);
}

TEST(DateFormatter, ReadsWhatItWrote) {
    const DateFormatter formatter(exifPattern, "en_US_POSIX");
    for (const char* const zone : {"UTC", "Australia/Lord_Howe", "America/St_Johns"}) {
        const EnvironmentVariable variable("TZ", zone);
        for (std::int64_t hour = 0; hour < std::int64_t{24} * 366; ++hour) {
            const std::string text = formatter.stringFromDate(at(winter + hour * 3'600));
            const auto date = formatter.dateFromString(text);
            ASSERT_TRUE(date) << zone << " " << text;
            ASSERT_EQ(formatter.stringFromDate(*date), text) << zone;
        }
    }
}

} // namespace
