// SPDX-License-Identifier: Apache-2.0
#include "platform/Json.h"

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

using platform::Json;

std::string textOf(const Json& json) {
    std::string error;
    const auto text = json.serialized(error);
    EXPECT_EQ(error, "");
    return text.value_or("(none)");
}

std::string errorOf(const Json& json) {
    std::string error;
    EXPECT_FALSE(json.serialized(error));
    return error;
}

Json nested(int levels) {
    Json json = Json::Array{};
    for (int i = 1; i < levels; ++i) {
        json = Json::Array{json};
    }
    return json;
}

TEST(Json, ObjectsKeepTheOrderOfTheirMembers) {
    EXPECT_EQ(textOf(Json::Object{{"z", std::int64_t{1}}, {"a", "x"}, {"m", nullptr}}),
              "{\n  \"z\": 1,\n  \"a\": \"x\",\n  \"m\": null\n}");
}

TEST(Json, EveryLevelIsIndentedByTwo) {
    EXPECT_EQ(textOf(Json::Object{{"a", Json::Array{true, Json::Object{{"b", false}}}}}),
              "{\n  \"a\": [\n    true,\n    {\n      \"b\": false\n    }\n  ]\n}");
    EXPECT_EQ(textOf(Json::Object{{"a", Json::Array{}}, {"o", Json::Object{}}}),
              "{\n  \"a\": [],\n  \"o\": {}\n}");
}

TEST(Json, AnElementStandsAsInAnArray) {
    const Json elements = Json::Array{nullptr, "x", Json::Object{{"a", Json::Array{true}}}};
    std::string text = "[";
    for (const Json& element : std::get<Json::Array>(elements.value())) {
        std::string error;
        text.append(text == "[" ? "\n" : ",\n")
            .append(element.serializedAsElement(error).value_or("(none)"));
        EXPECT_EQ(error, "");
    }
    EXPECT_EQ(text + "\n]", textOf(elements));
}

TEST(Json, NumbersAreExact) {
    EXPECT_EQ(textOf(Json::Array{std::numeric_limits<std::uint64_t>::max(),
                                 std::numeric_limits<std::int64_t>::min(), 0.5}),
              "[\n  18446744073709551615,\n  -9223372036854775808,\n  0.5\n]");
}

TEST(Json, TextsAreEscapedAndOtherwiseRaw) {
    EXPECT_EQ(textOf(Json::Array{"\"\\/\b\f\n\r\t\x01\x7F grün"}),
              "[\n  \"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\x7F grün\"\n]");
}

TEST(Json, BytesThatAreNotUTF8AreReplaced) {
    EXPECT_EQ(textOf(Json::Object{{"k\xFF", "caf\xE9.txt"}}),
              "{\n  \"k\uFFFD\": \"caf\uFFFD.txt\"\n}");
}

TEST(Json, OnlyObjectsAndArraysAreDocuments) {
    EXPECT_NE(errorOf("text"), "");
    EXPECT_NE(errorOf(nullptr), "");
    EXPECT_NE(errorOf(std::int64_t{1}), "");
}

TEST(Json, NumbersThatAreNotFiniteFail) {
    EXPECT_NE(errorOf(Json::Array{std::numeric_limits<double>::quiet_NaN()}), "");
    EXPECT_NE(errorOf(Json::Object{{"a", Json::Array{std::numeric_limits<double>::infinity()}}}),
              "");
}

TEST(Json, NestingEndsAt512Levels) {
    EXPECT_NE(textOf(nested(512)), "(none)");
    EXPECT_NE(errorOf(nested(513)), "");
}

} // namespace
