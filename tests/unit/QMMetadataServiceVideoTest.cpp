// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"
#include "tests/unit/support/EntryTexts.h"

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Asset = platform::MediaAssetProperties;
using Format = Asset::FormatDescription;
using Keys = QMMetadataService::Keys;
using Texts = std::vector<std::string>;

constexpr double infinity = std::numeric_limits<double>::infinity();

// Every key, in an order of its own.
const Keys allKeys{"audioCodec", "audioTracks", "videoCodec", "frameRate",
                   "dimensions", "sampleRate",  "duration"};

QMMetadataEntries entriesOf(const std::optional<Asset>& asset, const Keys& keys = allKeys) {
    QMMetadataEntries entries;
    QMMetadataService::init({nullptr, {}, [&asset](const std::string&, bool) { return asset; }})
        ->extractVideoMetadata("/film.mp4", keys, entries);
    return entries;
}

Texts valuesOf(const Asset& asset, const Keys& keys = allKeys) {
    return valuesOfEntries(entriesOf(asset, keys));
}

Asset film() {
    Asset asset;
    asset.duration = 3725.9;
    asset.videoTracks = {{1920, 1080, {}, 29.97003F, Format{0x61766331}},
                         {64, 48, {}, 1, Format{1}}};
    asset.audioTracks = {{Format{0x61616320}, {{44100, 2, 0}}}, {Format{0x61632D33}, {}}};
    return asset;
}

Asset withDuration(double seconds) {
    Asset asset;
    asset.duration = seconds;
    return asset;
}

Asset withTurn(double a, double b, double c, double d) {
    Asset asset;
    asset.videoTracks = {{1920, 1080.7, {a, b, c, d}, 0, {}}};
    return asset;
}

Asset withCode(std::optional<std::uint32_t> code) {
    Asset asset;
    asset.videoTracks = {{0, 0, {}, 0, Format{code}}};
    return asset;
}

} // namespace

TEST(QMMetadataServiceVideo, TellsSixThingsInTheirOrder) {
    EXPECT_EQ(valuesOf(film()),
              (Texts{"duration=01:02:05", "dimensions=1920 × 1080", "frameRate=29.97 fps",
                     "videoCodec=avc1", "audioTracks=2", "audioCodec=aac "}));
}

TEST(QMMetadataServiceVideo, LabelsEntriesAndMarksDurationAndDimensions) {
    EXPECT_EQ(labelsOfEntries(entriesOf(film())),
              (Texts{"meta.video.duration!", "meta.video.dimensions!", "meta.video.frameRate",
                     "meta.video.codec", "meta.video.audioTracks", "meta.video.audioCodec"}));
}

TEST(QMMetadataServiceVideo, EachKeyIsToldAlone) {
    for (const std::string& text : valuesOf(film())) {
        EXPECT_EQ(valuesOf(film(), {text.substr(0, text.find('='))}), Texts{text});
    }
    EXPECT_EQ(valuesOf(film(), {}), Texts());
}

TEST(QMMetadataServiceVideo, DurationsAreCutOffToSeconds) {
    const Keys keys{"duration"};
    EXPECT_EQ(valuesOf(withDuration(0), keys), Texts{"duration=00:00"});
    EXPECT_EQ(valuesOf(withDuration(59.9), keys), Texts{"duration=00:59"});
    EXPECT_EQ(valuesOf(withDuration(3599.999), keys), Texts{"duration=59:59"});
    EXPECT_EQ(valuesOf(withDuration(3600), keys), Texts{"duration=01:00:00"});
    EXPECT_EQ(valuesOf(withDuration(36000), keys), Texts{"duration=10:00:00"});
    EXPECT_EQ(valuesOf(withDuration(360000), keys), Texts{"duration=100:00:00"});
    EXPECT_EQ(valuesOf(withDuration(-5), keys), Texts{"duration=00:00"});
    EXPECT_EQ(valuesOf(withDuration(infinity), keys), Texts{"duration=5124095576030431:00:15"});
}

TEST(QMMetadataServiceVideo, SizesAreThoseOfTheTurnedPicture) {
    const Keys keys{"dimensions"};
    EXPECT_EQ(valuesOf(withTurn(1, 0, 0, 1), keys), Texts{"dimensions=1920 × 1080"});
    EXPECT_EQ(valuesOf(withTurn(0, 1, -1, 0), keys), Texts{"dimensions=1080 × 1920"});
    EXPECT_EQ(valuesOf(withTurn(0, -1, 1, 0), keys), Texts{"dimensions=1080 × 1920"});
    EXPECT_EQ(valuesOf(withTurn(-1, 0, 0, -1), keys), Texts{"dimensions=1920 × 1080"});
    EXPECT_EQ(valuesOf(withTurn(0.5, 0, 0, 2), keys), Texts{"dimensions=960 × 2161"});
    EXPECT_EQ(valuesOf(withTurn(0, 0, 0, 1e300), keys),
              Texts{"dimensions=0 × 18446744073709551615"});
}

TEST(QMMetadataServiceVideo, OnlyRatesAboveZeroAreTold) {
    const Keys keys{"frameRate"};
    Asset asset = film();
    for (const float rate : {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
        asset.videoTracks.front().nominalFrameRate = rate;
        EXPECT_EQ(valuesOf(asset, keys), Texts());
    }
    asset.videoTracks.front().nominalFrameRate = 0.001F;
    EXPECT_EQ(valuesOf(asset, keys), Texts{"frameRate=0.00 fps"});
    asset.videoTracks.front().nominalFrameRate = 59.94006F;
    EXPECT_EQ(valuesOf(asset, keys), Texts{"frameRate=59.94 fps"});
}

TEST(QMMetadataServiceVideo, CodesAreTextsAsTheyStand) {
    const Keys keys{"videoCodec"};
    EXPECT_EQ(valuesOf(withCode(0x726C6520), keys), Texts{"videoCodec=rle "});
    EXPECT_EQ(valuesOf(withCode(0x6D730002), keys), Texts{"videoCodec=ms"});
    EXPECT_EQ(valuesOf(withCode(0), keys), Texts{"videoCodec="});
    EXPECT_EQ(valuesOf(withCode(0x41C3A942), keys), Texts{"videoCodec=AéB"});
    EXPECT_EQ(valuesOf(withCode(0x414243C3), keys), Texts{"videoCodec=—"});
    EXPECT_EQ(valuesOf(withCode(0xFFFFFFFF), keys), Texts{"videoCodec=—"});
    EXPECT_EQ(valuesOf(withCode(0x41C300A9), keys), Texts{"videoCodec=—"});
}

TEST(QMMetadataServiceVideo, FormatsWithoutACodeAreToldByADash) {
    EXPECT_EQ(valuesOf(withCode(std::nullopt), {"videoCodec"}), Texts{"videoCodec=—"});
    Asset asset;
    asset.audioTracks = {{Format(), {}}};
    EXPECT_EQ(valuesOf(asset, {"audioCodec"}), Texts{"audioCodec=—"});
}

TEST(QMMetadataServiceVideo, TracksWithoutADescriptionHaveNoCodec) {
    Asset asset = withCode(1);
    asset.videoTracks.front().formatDescription.reset();
    EXPECT_EQ(valuesOf(asset, {"videoCodec"}), Texts());
}

TEST(QMMetadataServiceVideo, TracksOfSoundAreCountedEvenIfThereAreNone) {
    Asset asset = film();
    asset.audioTracks.clear();
    EXPECT_EQ(valuesOf(asset, {"audioTracks", "audioCodec"}), Texts{"audioTracks=0"});
    asset.audioTracks.resize(3);
    EXPECT_EQ(valuesOf(asset, {"audioTracks", "audioCodec"}), Texts{"audioTracks=3"});
    EXPECT_EQ(valuesOf({}), Texts{"audioTracks=0"});
}

TEST(QMMetadataServiceVideo, OnlyTheFirstTrackIsTold) {
    Asset asset = film();
    asset.videoTracks.front() = {};
    asset.audioTracks.front() = {};
    EXPECT_EQ(valuesOf(asset, {"dimensions", "frameRate", "videoCodec", "audioCodec"}),
              Texts{"dimensions=0 × 0"});
}

TEST(QMMetadataServiceVideo, ItemsAreNeverAskedFor) {
    std::vector<std::pair<std::string, bool>> readings;
    const auto service =
        QMMetadataService::init({nullptr, {}, [&](const std::string& path, bool wants) {
                                     readings.emplace_back(path, wants);
                                     return std::optional(film());
                                 }});
    QMMetadataEntries entries{QMMetadataEntry::entryWithKey("first", "l", "v")};
    service->extractVideoMetadata("/a\xFF.mov", {"title", "duration"}, entries);
    EXPECT_EQ(readings, (std::vector<std::pair<std::string, bool>>{{"/a\xFF.mov", false}}));
    EXPECT_EQ(valuesOfEntries(entries), (Texts{"first=v", "duration=01:02:05"}));
}

TEST(QMMetadataServiceVideo, WhatCannotBeReadHasNoEntries) {
    EXPECT_TRUE(entriesOf(std::nullopt).empty());
}
