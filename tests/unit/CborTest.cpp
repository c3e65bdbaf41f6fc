// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Cbor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using platform::Data;
using platform::Json;
namespace Cbor = platform::Cbor;

Data bytes(const std::vector<unsigned>& numbers) {
    Data result;
    for (const unsigned number : numbers) {
        result.push_back(static_cast<std::byte>(number));
    }
    return result;
}

Json textOf(const char* text) {
    return Json(std::string(text));
}

Json nested(int levels) {
    Json json = std::int64_t{1};
    for (int i = 0; i < levels; ++i) {
        Json::Array array;
        array.emplace_back(std::move(json));
        json = Json(std::move(array));
    }
    return json;
}

// What another implementation of the format understands of our bytes, as JSON.
std::string asOthersRead(const Json& value) {
    const Data data = Cbor::encoded(value).value();
    return nlohmann::json::from_cbor(data).dump();
}

std::vector<Json> samples() {
    Json::Object object;
    object.emplace_back("", Json(nullptr));
    object.emplace_back("größe", Json(std::uint64_t{18446744073709551615U}));
    object.emplace_back("long", Json(std::string(70'000, 'x')));
    Json::Array list;
    for (const std::int64_t number :
         {std::int64_t{0}, std::int64_t{23}, std::int64_t{24}, std::int64_t{255}, std::int64_t{256},
          std::int64_t{65'535}, std::int64_t{65'536}, std::int64_t{4294967295},
          std::int64_t{4294967296}, std::numeric_limits<std::int64_t>::max()}) {
        list.emplace_back(number);
        list.emplace_back(-number);
        list.emplace_back(~number);
    }
    for (const double number : {0.0, 0.1, 1e300, -2.5, 5e-324}) {
        list.emplace_back(number);
    }
    list.emplace_back(true);
    list.emplace_back(false);
    list.emplace_back(Json::Array());
    list.emplace_back(Json::Object());
    std::vector<Json> result;
    result.emplace_back(std::move(object));
    result.emplace_back(std::move(list));
    result.emplace_back(textOf("\xF0\x9F\x98\x80"));
    return result;
}

bool equal(const Json& one, const Json& other);

struct Equality {
    bool operator()(const Json::Array& one, const Json::Array& other) const {
        return std::equal(one.begin(), one.end(), other.begin(), other.end(), equal);
    }
    bool operator()(const Json::Object& one, const Json::Object& other) const {
        return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                          [](const auto& left, const auto& right) {
                              return left.first == right.first && equal(left.second, right.second);
                          });
    }
    template <class Value>
    bool operator()(const Value& one, const Value& other) const {
        return one == other;
    }
    template <class One, class Other>
    bool operator()(const One&, const Other&) const {
        return false;
    }
};

bool equal(const Json& one, const Json& other) {
    return std::visit(Equality(), one.value(), other.value());
}

TEST(Cbor, ReadsWhatItWrote) {
    for (const Json& sample : samples()) {
        const auto data = Cbor::encoded(sample);
        ASSERT_TRUE(data);
        const auto read = Cbor::decoded(*data);
        ASSERT_TRUE(read);
        EXPECT_TRUE(equal(*read, sample));
    }
}

TEST(Cbor, IsReadByOthers) {
    Json::Object object;
    object.emplace_back("a", nested(2));
    object.emplace_back("b", Json(-2.5));
    object.emplace_back("c", Json(std::numeric_limits<std::int64_t>::min()));
    object.emplace_back("d", textOf("grün"));
    EXPECT_EQ(asOthersRead(Json(std::move(object))),
              R"({"a":[[1]],"b":-2.5,"c":-9223372036854775808,"d":"grün"})");
    for (const Json& sample : samples()) {
        EXPECT_NO_THROW(asOthersRead(sample));
    }
}

void expectExample(const Json& value, const std::vector<unsigned>& numbers) {
    const Data expected = bytes(numbers);
    EXPECT_EQ(Cbor::encoded(value), expected);
    const auto read = Cbor::decoded(expected);
    EXPECT_TRUE(read && equal(*read, value)) << ::testing::PrintToString(numbers);
}

TEST(Cbor, WritesTheExamplesOfTheStandard) {
    expectExample(std::int64_t{1000}, {0x19, 0x03, 0xE8});
    expectExample(std::int64_t{-1000}, {0x39, 0x03, 0xE7});
    expectExample(1.1, {0xFB, 0x3F, 0xF1, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A});
    expectExample(nullptr, {0xF6});
    expectExample(true, {0xF5});
    expectExample(textOf("IETF"), {0x64, 0x49, 0x45, 0x54, 0x46});
    expectExample(Json::Array(), {0x80});
    expectExample(Json::Object(), {0xA0});
}

TEST(Cbor, KnowsNumbersThatAreNone) {
    const auto data = Cbor::encoded(Json(std::numeric_limits<double>::quiet_NaN()));
    const auto read = Cbor::decoded(data.value());
    ASSERT_TRUE(read);
    EXPECT_TRUE(std::isnan(std::get<double>(read->value())));
}

TEST(Cbor, HasALimitOfLevels) {
    const auto deepest = Cbor::encoded(nested(Cbor::maximumDepth));
    ASSERT_TRUE(deepest);
    EXPECT_TRUE(Cbor::decoded(*deepest));
    EXPECT_FALSE(Cbor::encoded(nested(Cbor::maximumDepth + 1)));
    Data deeper = *deepest;
    deeper.insert(deeper.begin(), std::byte{0x81});
    EXPECT_FALSE(Cbor::decoded(deeper));
    Json::Object object;
    object.emplace_back("a", nested(Cbor::maximumDepth));
    EXPECT_FALSE(Cbor::encoded(Json(object)));
    const Data map{std::byte{0xA1}, std::byte{0x61}, std::byte{'a'}};
    deeper = *deepest;
    deeper.insert(deeper.begin(), map.begin(), map.end());
    EXPECT_FALSE(Cbor::decoded(deeper));
    deeper = Data(Cbor::maximumDepth, std::byte{0x81});
    deeper.push_back(std::byte{0xA0});
    EXPECT_FALSE(Cbor::decoded(deeper));
    // Each of these once more than the stack could hold.
    for (const unsigned start : {0x81U, 0x9FU, 0x7FU, 0x5FU, 0xC1U, 0xBFU}) {
        EXPECT_FALSE(Cbor::decoded(Data(10'000'000, static_cast<std::byte>(start)))) << start;
    }
}

TEST(Cbor, RefusesWhatItNeverWrites) {
    const std::vector<Data> refused{
        {},                                                            // nothing
        bytes({0x00, 0x00}),                                           // something left over
        bytes({0x18}),                                                 // a number cut off
        bytes({0x18, 0x17}),                                           // one longer than it need be
        bytes({0x19, 0x00, 0xFF}),                                     // and in two bytes
        bytes({0x3A, 0x00, 0x00, 0xFF, 0xFF}),                         // and in four, below zero
        bytes({0x1B, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}),             // and in eight
        bytes({0x78, 0x01, 0x61}),                                     // a text's length likewise
        bytes({0x99, 0x00, 0x00}),                                     // and a list's
        bytes({0x1B, 0, 0, 0, 0, 0, 0, 0}),                            // a long one
        bytes({0x3B, 0x80, 0, 0, 0, 0, 0, 0, 0}),                      // below the least integer
        bytes({0x41, 0x61}),                                           // bytes
        bytes({0x62, 0x61}),                                           // a text cut off
        bytes({0x61, 0xFF}),                                           // a text that is none
        bytes({0x7F, 0x61, 0x61, 0xFF}),                               // a text in pieces
        bytes({0x7B, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), // a text of all there is
        bytes({0x9B, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), // a list of as much
        bytes({0xBB, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), // an object
        bytes({0x82, 0x00}),                                           // a list cut off
        bytes({0x9F, 0xFF}),                                           // a list without a length
        bytes({0xA1, 0x61, 0x61}),                                     // a member without a value
        bytes({0xA1, 0x00, 0x00}),                                     // a name that is no text
        bytes({0xC0, 0x61, 0x61}),                                     // a tag
        bytes({0xF7}),                                                 // undefined
        bytes({0xF9, 0x3C, 0x00}),                                     // a short number
        bytes({0xFA, 0x3F, 0x80, 0, 0}),                               // one of 32 bits
        bytes({0x1C}),                                                 // reserved
        bytes({0xFF}),                                                 // the end of something
    };
    for (const Data& data : refused) {
        EXPECT_FALSE(Cbor::decoded(data)) << ::testing::PrintToString(data.size());
    }
}

} // namespace
