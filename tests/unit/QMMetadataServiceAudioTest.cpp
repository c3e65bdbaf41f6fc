// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"
#include "tests/unit/support/EntryTexts.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Asset = platform::MediaAssetProperties;
using Format = Asset::FormatDescription;
using CommonKey = Asset::MetadataItem::CommonKey;
using Keys = QMMetadataService::Keys;
using Texts = std::vector<std::string>;

// Every key, in an order of its own.
const Keys allKeys{"album",    "artist", "title",      "bitDepth", "audioTracks",
                   "channels", "codec",  "sampleRate", "duration"};

QMMetadataEntries entriesOf(const std::optional<Asset>& asset, const Keys& keys = allKeys) {
    QMMetadataEntries entries;
    QMMetadataService::init({nullptr, {}, [&asset](const std::string&, bool) { return asset; }})
        ->extractAudioMetadata("/song.mp3", keys, entries);
    return entries;
}

Texts valuesOf(const Asset& asset, const Keys& keys = allKeys) {
    return valuesOfEntries(entriesOf(asset, keys));
}

Asset song() {
    Asset asset;
    asset.duration = 245.7;
    asset.audioTracks = {{Format{0x6C70636D}, {{44100, 2, 16}}}, {Format{1}, {{1, 1, 1}}}};
    asset.commonMetadata = {{CommonKey::albumName, "Album"},
                            {CommonKey::title, "One"},
                            {CommonKey::artist, "First"},
                            {CommonKey::title, "One"}};
    return asset;
}

Asset withStream(std::optional<Asset::AudioTrack::StreamDescription> stream) {
    Asset asset;
    asset.audioTracks = {{std::nullopt, stream}};
    return asset;
}

Asset withDuration(double seconds) {
    Asset asset;
    asset.duration = seconds;
    return asset;
}

} // namespace

TEST(QMMetadataServiceAudio, TellsOfTheSoundAndThenTheItemsInTheirOwnOrder) {
    EXPECT_EQ(valuesOf(song()),
              (Texts{"duration=4:05", "codec=lpcm", "sampleRate=44100 Hz", "channels=Stereo",
                     "bitDepth=16 Bit", "album=Album", "title=One", "artist=First", "title=One"}));
}

TEST(QMMetadataServiceAudio, LabelsEntriesAndMarksDurationTitlesAndArtists) {
    EXPECT_EQ(labelsOfEntries(entriesOf(song())),
              (Texts{"meta.audio.duration!", "meta.audio.codec", "meta.audio.sampleRate",
                     "meta.audio.channels", "meta.audio.bitDepth", "meta.audio.album",
                     "meta.audio.title!", "meta.audio.artist!", "meta.audio.title!"}));
}

TEST(QMMetadataServiceAudio, FormatsWithoutACodeAreToldByADash) {
    Asset asset = song();
    asset.audioTracks.front().formatDescription = Format();
    EXPECT_EQ(valuesOf(asset, {"codec"}), Texts{"codec=—"});
    asset.audioTracks.front().formatDescription.reset();
    EXPECT_EQ(valuesOf(asset, {"codec"}), Texts());
}

TEST(QMMetadataServiceAudio, MinutesAreNeverHours) {
    const Keys keys{"duration"};
    EXPECT_EQ(valuesOf(withDuration(0), keys), Texts{"duration=0:00"});
    EXPECT_EQ(valuesOf(withDuration(59.9), keys), Texts{"duration=0:59"});
    EXPECT_EQ(valuesOf(withDuration(3725), keys), Texts{"duration=62:05"});
    EXPECT_EQ(valuesOf(withDuration(7200), keys), Texts{"duration=120:00"});
    EXPECT_EQ(valuesOf({}, keys), Texts());
}

TEST(QMMetadataServiceAudio, ChannelsAndDepthGoWithTheSampleRate) {
    EXPECT_EQ(valuesOf(song(), {"channels", "bitDepth"}), Texts());
    EXPECT_EQ(valuesOf(song(), {"bitDepth", "sampleRate"}),
              (Texts{"sampleRate=44100 Hz", "bitDepth=16 Bit"}));
    EXPECT_EQ(valuesOf(song(), {"sampleRate", "channels"}),
              (Texts{"sampleRate=44100 Hz", "channels=Stereo"}));
    EXPECT_EQ(valuesOf(song(), {"sampleRate"}), Texts{"sampleRate=44100 Hz"});
}

TEST(QMMetadataServiceAudio, OneAndTwoChannelsHaveNames) {
    const Keys keys{"sampleRate", "channels", "bitDepth"};
    const auto channels = [&keys](std::uint32_t number) {
        return valuesOf(withStream({{48000, number, 0}}), keys).at(1);
    };
    EXPECT_EQ(channels(0), "channels=0");
    EXPECT_EQ(channels(1), "channels=Mono");
    EXPECT_EQ(channels(2), "channels=Stereo");
    EXPECT_EQ(channels(6), "channels=6");
    EXPECT_EQ(channels(4294967295), "channels=4294967295");
}

TEST(QMMetadataServiceAudio, SoundWithoutDepthHasNone) {
    EXPECT_EQ(valuesOf(withStream({{22050.5, 1, 0}})),
              (Texts{"sampleRate=22050 Hz", "channels=Mono"}));
    EXPECT_EQ(valuesOf(withStream(std::nullopt)), Texts());
}

TEST(QMMetadataServiceAudio, OnlyTheFirstTrackIsTold) {
    Asset asset = song();
    asset.audioTracks.front() = {};
    asset.commonMetadata.clear();
    EXPECT_EQ(valuesOf(asset), Texts{"duration=4:05"});
    asset.audioTracks.clear();
    EXPECT_EQ(valuesOf(asset), Texts{"duration=4:05"});
}

TEST(QMMetadataServiceAudio, ItemsOfOtherKeysAreLeftOut) {
    EXPECT_EQ(valuesOf(song(), {"title"}), (Texts{"title=One", "title=One"}));
    EXPECT_EQ(valuesOf(song(), {"album", "artist"}), (Texts{"album=Album", "artist=First"}));
}

TEST(QMMetadataServiceAudio, ItemsThatAreNoTextsHaveADash) {
    Asset asset;
    asset.commonMetadata = {{CommonKey::title, std::nullopt}, {CommonKey::title, ""}};
    EXPECT_EQ(valuesOf(asset), (Texts{"title=—", "title="}));
}

TEST(QMMetadataServiceAudio, ItemsAreAskedForOnlyWhereOneIsEnabled) {
    std::vector<bool> readings;
    const auto service =
        QMMetadataService::init({nullptr, {}, [&](const std::string& path, bool wants) {
                                     EXPECT_EQ(path, "/a.mp3");
                                     readings.push_back(wants);
                                     return std::optional<Asset>();
                                 }});
    QMMetadataEntries entries;
    for (const Keys& keys : {Keys{"title"}, Keys{"artist"}, Keys{"duration", "album"},
                             Keys{"duration", "codec", "sampleRate"}, Keys{}}) {
        service->extractAudioMetadata("/a.mp3", keys, entries);
    }
    EXPECT_EQ(readings, (std::vector<bool>{true, true, true, false, false}));
    EXPECT_TRUE(entries.empty());
}

TEST(QMMetadataServiceAudio, AppendsToWhatIsThere) {
    QMMetadataEntries entries{QMMetadataEntry::entryWithKey("first", "l", "v")};
    QMMetadataService::init(
        {nullptr, {}, [](const std::string&, bool) { return std::optional(song()); }})
        ->extractAudioMetadata("/song.mp3", {"codec"}, entries);
    EXPECT_EQ(valuesOfEntries(entries), (Texts{"first=v", "codec=lpcm"}));
}
