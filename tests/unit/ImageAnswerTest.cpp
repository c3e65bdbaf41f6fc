// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/ImageAnswer.h"

#include "platform/linux/Cbor.h"

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using platform::Data;
using platform::ImageProperties;
using platform::Json;
using platform::worker::decodedImageProperties;
using platform::worker::encodedImageProperties;

constexpr std::int64_t largest = std::numeric_limits<std::uint32_t>::max();

ImageProperties everything() {
    ImageProperties image;
    image.pixelWidth = largest;
    image.pixelHeight = 0;
    image.depth = 16;
    image.colorModel = "CMYK";
    image.profileName = "Größe 😀";
    image.dpiWidth = 72.009;
    image.dpiHeight = 0;
    image.hasAlpha = false;
    image.imageCount = std::numeric_limits<std::uint64_t>::max();
    image.exif = {"Lens", 1.0 / 3, 2.8, {100, 0, largest}, 35, 50, "2023:07:14 18:30:05"};
    image.tiff = {"Maker", "Model", "Software", "©"};
    image.gps = {48.1, "N", 11.5, "E"};
    image.iptc = {"Copyright"};
    return image;
}

ImageProperties passed(const ImageProperties& image) {
    const auto result = decodedImageProperties(encodedImageProperties(image));
    EXPECT_TRUE(result);
    return result.value_or(ImageProperties());
}

Json object(const std::string& name, Json value) {
    Json::Object members;
    members.emplace_back(name, std::move(value));
    return Json(std::move(members));
}

bool isRead(const Json& json) {
    return decodedImageProperties(platform::Cbor::encoded(json).value()).has_value();
}

bool isRead(const std::string& name, Json value) {
    return isRead(object(name, std::move(value)));
}

TEST(ImageAnswer, ArrivesAsItWasSent) {
    EXPECT_EQ(passed(everything()), everything());
    EXPECT_EQ(passed({}), ImageProperties());
}

TEST(ImageAnswer, KeepsBlocksThatAreEmpty) {
    ImageProperties image;
    image.exif.emplace();
    image.gps.emplace();
    EXPECT_EQ(passed(image), image);
}

TEST(ImageAnswer, LeavesOutWhatMayNotPass) {
    ImageProperties image = everything();
    image.pixelWidth = -1;
    image.depth = largest + 1;
    image.colorModel.emplace("rgb");
    image.profileName = std::string("a\0b", 3);
    image.dpiWidth = std::numeric_limits<double>::infinity();
    image.exif->fNumber = std::numeric_limits<double>::quiet_NaN();
    image.exif->isoSpeedRatings = {-1, 100, largest + 1};
    image.tiff->make.emplace("\xFF");
    ImageProperties expected = everything();
    expected.pixelWidth.reset();
    expected.depth.reset();
    expected.colorModel.reset();
    expected.profileName.reset();
    expected.dpiWidth.reset();
    expected.exif->fNumber.reset();
    expected.exif->isoSpeedRatings = {100};
    expected.tiff->make.reset();
    EXPECT_EQ(passed(image), expected);
}

TEST(ImageAnswer, IsRefusedWithAnotherType) {
    EXPECT_TRUE(isRead("pixelWidth", Json(std::int64_t{1})));
    EXPECT_FALSE(isRead("pixelWidth", Json(1.0)));
    EXPECT_FALSE(isRead("pixelWidth", Json("1")));
    EXPECT_FALSE(isRead("dpiWidth", Json(std::int64_t{1})));
    EXPECT_FALSE(isRead("hasAlpha", Json(std::int64_t{1})));
    EXPECT_FALSE(isRead("profileName", Json(nullptr)));
    EXPECT_FALSE(isRead("imageCount", Json(std::int64_t{-1})));
    EXPECT_FALSE(isRead("imageCount", Json(true)));
    EXPECT_FALSE(isRead("exif", Json(Json::Array())));
    EXPECT_FALSE(isRead(Json(Json::Array())));
    EXPECT_FALSE(isRead(Json(nullptr)));
}

TEST(ImageAnswer, IsRefusedWithAValueThatMayNotPass) {
    EXPECT_FALSE(isRead("pixelWidth", Json(std::int64_t{-1})));
    EXPECT_FALSE(isRead("depth", Json(largest + 1)));
    EXPECT_FALSE(isRead("depth", Json(std::numeric_limits<std::uint64_t>::max())));
    EXPECT_FALSE(isRead("colorModel", Json("rgb")));
    EXPECT_FALSE(isRead("profileName", Json(std::string(1, '\0'))));
    EXPECT_FALSE(isRead("dpiWidth", Json(std::numeric_limits<double>::infinity())));
    EXPECT_FALSE(isRead("exif", object("fNumber", Json(std::numeric_limits<double>::quiet_NaN()))));
    Json::Array numbers;
    EXPECT_FALSE(isRead("exif", object("isoSpeedRatings", Json(numbers))));
    numbers.emplace_back(std::int64_t{100});
    EXPECT_TRUE(isRead("exif", object("isoSpeedRatings", Json(numbers))));
    EXPECT_FALSE(isRead("exif", object("isoSpeedRatings", Json(std::int64_t{100}))));
    for (const Json& other : {Json("100"), Json(std::int64_t{-1}), Json(largest + 1)}) {
        Json::Array more = numbers;
        more.push_back(other);
        EXPECT_FALSE(isRead("exif", object("isoSpeedRatings", Json(more))));
    }
}

TEST(ImageAnswer, IsRefusedWithMembersThatAreUnknownOrTwiceThere) {
    EXPECT_FALSE(isRead("width", Json(std::int64_t{1})));
    EXPECT_FALSE(isRead("exif", object("pixelWidth", Json(std::int64_t{1}))));
    EXPECT_FALSE(isRead("tiff", object("tiff", object("make", Json("a")))));
    Json::Object twice;
    twice.emplace_back("exif", Json(Json::Object()));
    EXPECT_TRUE(isRead(Json(twice)));
    twice.emplace_back("exif", Json(Json::Object()));
    EXPECT_FALSE(isRead(Json(twice)));
}

} // namespace
