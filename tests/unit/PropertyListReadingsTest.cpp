// SPDX-License-Identifier: Apache-2.0
#include "platform/PropertyListReadings.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

using platform::boolValue;
using platform::doubleValue;
using platform::integerValue;
using platform::PropertyList;
using platform::stringValue;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

PropertyList integer(std::int64_t number) {
    return number;
}

TEST(PropertyListReadings, TakeTextsForTruth) {
    for (const char* const text :
         {"YES", "yes", "true", "True", "T", "1", "9x", " \t1", "+01", "-7", "007", "yonder"}) {
        EXPECT_TRUE(boolValue(text)) << text;
    }
    for (const char* const text :
         {"", "NO", "false", "0", "-0", "0.5", "on", "x1", "-yes", "00", " ", "+", "0x1", "\xc2"}) {
        EXPECT_FALSE(boolValue(text)) << text;
    }
}

TEST(PropertyListReadings, TakeNumbersForTruth) {
    EXPECT_TRUE(boolValue(true));
    EXPECT_TRUE(boolValue(integer(-1)));
    EXPECT_TRUE(boolValue(0.5));
    EXPECT_FALSE(boolValue(false));
    EXPECT_FALSE(boolValue(integer(0)));
    EXPECT_FALSE(boolValue(-0.0));
}

TEST(PropertyListReadings, ReadIntegers) {
    EXPECT_EQ(integerValue(integer(smallest)), smallest);
    EXPECT_EQ(integerValue(true), 1);
    EXPECT_EQ(integerValue("42 apples"), 42);
    EXPECT_EQ(integerValue("\n -7"), -7);
    EXPECT_EQ(integerValue("+7.9"), 7);
    for (const char* const text : {"", "-", "+-5", "-+5", "x5", "0x10", "١"}) {
        EXPECT_EQ(integerValue(text), 0) << text;
    }
}

TEST(PropertyListReadings, BringIntegersIntoRange) {
    EXPECT_EQ(integerValue("9223372036854775807"), largest);
    EXPECT_EQ(integerValue("9223372036854775808"), largest);
    EXPECT_EQ(integerValue("-99999999999999999999"), smallest);
    EXPECT_EQ(integerValue(-2.9), -2);
    EXPECT_EQ(integerValue(9223372036854775808.0), largest);
    EXPECT_EQ(integerValue(-9223372036854775808.0), smallest);
    EXPECT_EQ(integerValue(-1e300), smallest);
    EXPECT_EQ(integerValue(infinity), largest);
    EXPECT_EQ(integerValue(std::nan("")), 0);
}

TEST(PropertyListReadings, ReadNumbersWithFractions) {
    EXPECT_EQ(doubleValue(2.5), 2.5);
    EXPECT_EQ(doubleValue(integer(-3)), -3);
    EXPECT_EQ(doubleValue(true), 1);
    EXPECT_EQ(doubleValue(" -1.5e3x"), -1500);
    EXPECT_EQ(doubleValue("+.5"), 0.5);
    EXPECT_EQ(doubleValue("5."), 5);
    EXPECT_EQ(doubleValue("2e"), 2);
    EXPECT_EQ(doubleValue("2e+"), 2);
    EXPECT_EQ(doubleValue("1,5"), 1);
    EXPECT_EQ(doubleValue("1e999"), infinity);
    EXPECT_EQ(doubleValue("1e-999"), 0);
    for (const char* const text : {"", ".", "-.", "e5", "inf", "nan", "0x1p3", "--1"}) {
        EXPECT_EQ(doubleValue(text), 0) << text;
    }
}

TEST(PropertyListReadings, WriteNumbers) {
    EXPECT_EQ(stringValue(""), "");
    EXPECT_EQ(stringValue("grün"), "grün");
    EXPECT_EQ(stringValue(integer(smallest)), "-9223372036854775808");
    EXPECT_EQ(stringValue(true), "1");
    EXPECT_EQ(stringValue(false), "0");
    EXPECT_EQ(stringValue(2.0), "2");
    EXPECT_EQ(stringValue(0.1), "0.1");
    EXPECT_EQ(stringValue(-1.0 / 3), "-0.3333333333333333");
    EXPECT_EQ(stringValue(1e300), "1e+300");
    EXPECT_EQ(stringValue(-std::numeric_limits<double>::denorm_min()), "-4.940656458412465e-324");
}

TEST(PropertyListReadings, FindNothingInOtherKinds) {
    const PropertyList kinds[] = {
        PropertyList::Array{true}, PropertyList::Dictionary{{"a", true}}, platform::Data(3),
        PropertyList::Value(PropertyList::AbsoluteTime{5}), PropertyList::UID{5}};
    for (const PropertyList& value : kinds) {
        EXPECT_FALSE(boolValue(value));
        EXPECT_EQ(integerValue(value), 0);
        EXPECT_EQ(doubleValue(value), 0);
        EXPECT_EQ(stringValue(value), std::nullopt);
    }
}

} // namespace
