// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/AssetAnswer.h"

#include "platform/linux/Cbor.h"
#include "platform/linux/worker/MediaMessage.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace {

using platform::Json;
using platform::MediaAssetProperties;
using platform::worker::decodedMediaAsset;
using platform::worker::encodedMediaAsset;
using CommonKey = MediaAssetProperties::MetadataItem::CommonKey;
using Format = MediaAssetProperties::FormatDescription;
using Items = std::vector<MediaAssetProperties::MetadataItem>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

MediaAssetProperties everything() {
    MediaAssetProperties asset;
    asset.duration = 36000.25;
    asset.videoTracks = {{853.3, 480, {0, 1, -1, 0}, 29.97003F, Format{0xFFFFFFFF}}, {}};
    asset.audioTracks = {
        {Format{0x61616320}, {{44100, 6, 24}}}, {std::nullopt, {{8000, 1, 0}}}, {Format(), {}}};
    asset.commonMetadata = {{CommonKey::artist, "Größe 😀"},
                            {CommonKey::title, ""},
                            {CommonKey::title, ""},
                            {CommonKey::albumName, std::nullopt}};
    return asset;
}

MediaAssetProperties passed(const MediaAssetProperties& asset) {
    const auto result = decodedMediaAsset(encodedMediaAsset(asset));
    EXPECT_TRUE(result);
    return result.value_or(MediaAssetProperties());
}

Json list(std::vector<Json> elements) {
    return Json(Json::Array(std::move(elements)));
}

bool isRead(const Json& json) {
    return decodedMediaAsset(platform::Cbor::encoded(json).value()).has_value();
}

Json turn(double a = 1) {
    return list({a, 0.0, 0.0, 1.0});
}

bool isVideoRead(Json track) {
    return isRead(list({nullptr, list({std::move(track)}), list({}), list({})}));
}

bool isAudioRead(Json track) {
    return isRead(list({nullptr, list({}), list({std::move(track)}), list({})}));
}

bool isItemRead(Json item) {
    return isRead(list({nullptr, list({}), list({}), list({std::move(item)})}));
}

} // namespace

TEST(AssetAnswer, ArrivesAsItWasSent) {
    EXPECT_EQ(passed(everything()), everything());
    EXPECT_EQ(passed({}), MediaAssetProperties());
}

TEST(AssetAnswer, LeavesOutNumbersThatMayNotPass) {
    MediaAssetProperties asset = everything();
    asset.duration = -1;
    EXPECT_EQ(passed(asset).duration, std::nullopt);
    asset.duration = nan;
    EXPECT_EQ(passed(asset).duration, std::nullopt);
    asset.videoTracks.front().naturalWidth = infinity;
    EXPECT_EQ(passed(asset).videoTracks.front(), MediaAssetProperties::VideoTrack());
    asset.videoTracks.front() = everything().videoTracks.front();
    asset.videoTracks.front().preferredTransform.c = nan;
    EXPECT_EQ(passed(asset).videoTracks.front(), MediaAssetProperties::VideoTrack());
    asset.audioTracks.front().streamDescription->sampleRate = -1;
    EXPECT_EQ(passed(asset).audioTracks.front(), MediaAssetProperties::AudioTrack());
    EXPECT_EQ(passed(asset).audioTracks.size(), 3U);
}

TEST(AssetAnswer, LeavesOutTextsThatMayNotPass) {
    MediaAssetProperties asset;
    asset.commonMetadata = {{CommonKey::title, "\xFF"},
                            {CommonKey::title, std::string("a\0b", 3)},
                            {CommonKey::artist, "good"}};
    EXPECT_EQ(passed(asset).commonMetadata, (Items{{CommonKey::artist, "good"}}));
}

TEST(AssetAnswer, FitsIntoAMessageWhateverIsInIt) {
    MediaAssetProperties asset;
    asset.videoTracks.resize(100'000);
    asset.audioTracks.resize(100'000, {Format{1}, {{1, 1, 1}}});
    asset.commonMetadata.resize(100'000, {CommonKey::title, std::string(100, 'x')});
    const auto bytes = encodedMediaAsset(asset);
    EXPECT_LE(bytes.size(), platform::worker::maximumMessageSize - 16);
    const auto found = decodedMediaAsset(bytes);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->videoTracks.size(), platform::worker::maximumTracks);
    EXPECT_EQ(found->audioTracks.size(), platform::worker::maximumTracks);
    EXPECT_EQ(found->commonMetadata.size(), platform::worker::maximumTextSize / 100);
    asset.commonMetadata.assign(100'000, {CommonKey::title, std::nullopt});
    EXPECT_LE(encodedMediaAsset(asset).size(), platform::worker::maximumMessageSize - 16);
}

TEST(AssetAnswer, TextsThatAreTooLongDoNotKeepOthersOut) {
    MediaAssetProperties asset;
    asset.commonMetadata = {{CommonKey::title, std::string(70'000, 'x')},
                            {CommonKey::title, "short"}};
    EXPECT_EQ(passed(asset).commonMetadata, (Items{{CommonKey::title, "short"}}));
}

TEST(AssetAnswer, IsRefusedInAnotherForm) {
    EXPECT_TRUE(isRead(list({nullptr, list({}), list({}), list({})})));
    EXPECT_FALSE(isRead(Json(nullptr)));
    EXPECT_FALSE(isRead(Json(Json::Object())));
    EXPECT_FALSE(isRead(list({})));
    EXPECT_FALSE(isRead(list({nullptr, list({}), list({})})));
    EXPECT_FALSE(isRead(list({nullptr, list({}), list({}), list({}), nullptr})));
    EXPECT_FALSE(isRead(list({"1", list({}), list({}), list({})})));
    EXPECT_FALSE(isRead(list({-1.0, list({}), list({}), list({})})));
    EXPECT_FALSE(isRead(list({infinity, list({}), list({}), list({})})));
    EXPECT_FALSE(isRead(list({std::int64_t{1}, list({}), list({}), list({})})));
    EXPECT_FALSE(isRead(list({nullptr, nullptr, list({}), list({})})));
}

TEST(AssetAnswer, IsRefusedWhenItsBytesAreNone) {
    const auto isRead = [](std::string_view bytes) {
        return decodedMediaAsset(platform::bytesOf(bytes)).has_value();
    };
    EXPECT_TRUE(isRead("\x84\xF6\x80\x80\x80"));
    EXPECT_FALSE(isRead(""));
    EXPECT_FALSE(isRead("\x84\xF6\x80\x80"));
    EXPECT_FALSE(isRead("\xFF"));
}

TEST(AssetAnswer, TracksAreRefusedInAnotherForm) {
    EXPECT_TRUE(isVideoRead(list({1.0, 1.0, turn(), 25.0, nullptr})));
    EXPECT_FALSE(isVideoRead(nullptr));
    EXPECT_FALSE(isVideoRead(list({1.0, 1.0, turn(), 25.0})));
    EXPECT_FALSE(isVideoRead(list({1.0, -1.0, turn(), 25.0, nullptr})));
    EXPECT_FALSE(isVideoRead(list({1.0, 1.0, turn(nan), 25.0, nullptr})));
    EXPECT_FALSE(isVideoRead(list({1.0, 1.0, list({1.0, 1.0, 1.0}), 25.0, nullptr})));
    EXPECT_FALSE(isVideoRead(list({1.0, 1.0, turn(), 29.97, nullptr}))); // of no float
    EXPECT_FALSE(isVideoRead(list({1.0, 1.0, turn(), 25.0, list({std::int64_t{-1}})})));
    EXPECT_FALSE(isVideoRead(list({1.0, 1.0, turn(), 25.0, list({std::int64_t{1} << 32})})));
    EXPECT_FALSE(isVideoRead(list({1.0, 1.0, turn(), 25.0, std::int64_t{1}})));
    EXPECT_FALSE(isVideoRead(list({1.0, 1.0, turn(), 25.0, list({})})));
    EXPECT_TRUE(isVideoRead(list({1.0, 1.0, turn(), 25.0, list({nullptr})})));
    const Json stream = list({44100.0, std::int64_t{2}, std::int64_t{16}});
    EXPECT_TRUE(isAudioRead(list({list({std::int64_t{1}}), stream})));
    EXPECT_FALSE(isAudioRead(list({nullptr, list({44100.0, std::int64_t{2}})})));
    EXPECT_FALSE(isAudioRead(list({1.0, stream})));
    EXPECT_FALSE(isAudioRead(list({stream, stream})));
    EXPECT_FALSE(isAudioRead(list({nullptr, list({nan, std::int64_t{2}, std::int64_t{16}})})));
}

TEST(AssetAnswer, ItemsAreRefusedInAnotherForm) {
    EXPECT_TRUE(isItemRead(list({std::int64_t{2}, "text"})));
    EXPECT_FALSE(isItemRead(list({std::int64_t{3}, "text"})));
    EXPECT_FALSE(isItemRead(list({"title", "text"})));
    EXPECT_FALSE(isItemRead(list({std::int64_t{0}, std::int64_t{0}})));
    EXPECT_FALSE(isItemRead(list({std::int64_t{0}, std::string(1, '\0')})));
    EXPECT_FALSE(isItemRead(list({std::int64_t{0}, std::string(70'000, 'x')})));
}

TEST(AssetAnswer, IsRefusedWithTooMany) {
    const Json item = list({std::int64_t{0}, nullptr});
    const std::vector<Json> items(platform::worker::maximumItems, item);
    EXPECT_TRUE(isRead(list({nullptr, list({}), list({}), list(items)})));
    std::vector<Json> more = items;
    more.push_back(item);
    EXPECT_FALSE(isRead(list({nullptr, list({}), list({}), list(more)})));
}
