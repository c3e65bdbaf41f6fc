// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/PDFAnswer.h"

#include "platform/linux/Cbor.h"

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using platform::Json;
using platform::PDFDocumentProperties;
using platform::worker::decodedPDFProperties;
using platform::worker::encodedPDFProperties;

constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();

PDFDocumentProperties everything() {
    PDFDocumentProperties document;
    document.pageCount = largest;
    document.version = {2, 0};
    document.title.emplace("Größe 😀");
    document.author.emplace();
    document.creator.emplace("C");
    document.isEncrypted = true;
    document.hasText = false;
    return document;
}

PDFDocumentProperties passed(const PDFDocumentProperties& document) {
    const auto result = decodedPDFProperties(encodedPDFProperties(document));
    EXPECT_TRUE(result);
    return result.value_or(PDFDocumentProperties());
}

// What has to be there, and a member besides, or instead of one of these.
Json::Object objectWith(const std::string& name, Json value) {
    Json::Object members;
    members.emplace_back("pageCount", std::int64_t{1});
    members.emplace_back("isEncrypted", false);
    std::erase_if(members, [&](const auto& member) { return member.first == name; });
    members.emplace_back(name, std::move(value));
    return members;
}

bool isRead(Json json) {
    return decodedPDFProperties(platform::Cbor::encoded(json).value()).has_value();
}
bool isRead(const std::string& name, Json value) {
    return isRead(Json(objectWith(name, std::move(value))));
}

Json list(std::int64_t first, std::int64_t second) {
    Json::Array numbers;
    numbers.emplace_back(first);
    numbers.emplace_back(second);
    return Json(std::move(numbers));
}

TEST(PDFAnswer, ArrivesAsItWasSent) {
    EXPECT_EQ(passed(everything()), everything());
    EXPECT_EQ(passed({}), PDFDocumentProperties());
}

TEST(PDFAnswer, LeavesOutWhatMayNotPass) {
    PDFDocumentProperties document = everything();
    document.pageCount = static_cast<std::uint64_t>(largest) + 1;
    document.version = {-1, 0};
    document.title = std::string("a\0b", 3);
    document.author.emplace("\xFF");
    PDFDocumentProperties expected = everything();
    expected.pageCount = 0;
    expected.version.reset();
    expected.title.reset();
    expected.author.reset();
    EXPECT_EQ(passed(document), expected);
}

TEST(PDFAnswer, IsRefusedWithAnotherType) {
    EXPECT_TRUE(isRead("pageCount", Json(std::int64_t{1})));
    EXPECT_FALSE(isRead("pageCount", Json(1.0)));
    EXPECT_FALSE(isRead("pageCount", Json(true)));
    EXPECT_FALSE(isRead("isEncrypted", Json(std::int64_t{1})));
    EXPECT_FALSE(isRead("hasText", Json(nullptr)));
    EXPECT_FALSE(isRead("title", Json(std::int64_t{1})));
    EXPECT_FALSE(isRead("version", Json("1.7")));
    EXPECT_FALSE(isRead(Json(Json::Array())));
    EXPECT_FALSE(isRead(Json(nullptr)));
}

TEST(PDFAnswer, IsRefusedWhenItsBytesAreNone) {
    EXPECT_FALSE(platform::worker::decodedPDFProperties({}));
    EXPECT_FALSE(platform::worker::decodedPDFProperties(platform::bytesOf("\xFF")));
    EXPECT_FALSE(platform::worker::decodedPDFProperties(platform::bytesOf("\xA1")));
}

TEST(PDFAnswer, IsRefusedWithAValueThatMayNotPass) {
    EXPECT_FALSE(isRead("pageCount", Json(std::int64_t{-1})));
    EXPECT_FALSE(isRead("pageCount", Json(largest + 1)));
    EXPECT_FALSE(isRead("pageCount", Json(std::numeric_limits<std::uint64_t>::max())));
    EXPECT_FALSE(isRead("title", Json(std::string(1, '\0'))));
    EXPECT_TRUE(isRead("version", list(1, 7)));
    EXPECT_FALSE(isRead("version", list(1, -7)));
    EXPECT_FALSE(isRead("version", list(largest + 1, 0)));
    EXPECT_FALSE(isRead("version", Json(Json::Array{Json(std::int64_t{1})})));
}

TEST(PDFAnswer, IsRefusedWithMembersThatAreUnknownMissingOrTwiceThere) {
    EXPECT_FALSE(isRead("subject", Json("s")));
    EXPECT_FALSE(isRead(Json(Json::Object())));
    for (std::size_t number = 0; number < 3; ++number) {
        Json::Object members = objectWith("title", Json("t"));
        EXPECT_TRUE(isRead(Json(members)));
        members.push_back(members.at(number));
        EXPECT_FALSE(isRead(Json(members)));
    }
    Json::Object members = objectWith("isEncrypted", Json(true));
    members.erase(members.begin());
    EXPECT_FALSE(isRead(Json(members)));
}

} // namespace
