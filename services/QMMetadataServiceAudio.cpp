// SPDX-License-Identifier: Apache-2.0
#include "platform/Format.h"
#include "services/QMMediaText.h"
#include "services/QMMetadataField.h"

#include <algorithm>
#include <array>

using platform::MediaAssetProperties;

namespace {

using Value = std::optional<std::string>;
using AudioTrack = MediaAssetProperties::AudioTrack;
using CommonKey = MediaAssetProperties::MetadataItem::CommonKey;

Value duration(const MediaAssetProperties& asset) {
    if (!asset.duration) {
        return std::nullopt;
    }
    // Never hours, however long it is.
    constexpr std::uint64_t secondsAMinute = 60;
    const std::uint64_t seconds = qm_wholePart(*asset.duration);
    return platform::format("{}:", seconds / secondsAMinute) +
           qm_twoDigits(seconds % secondsAMinute);
}

Value codec(const MediaAssetProperties& asset) {
    return qm_codecOfFirst(asset.audioTracks);
}

// Of the first track; null when there is none.
const AudioTrack::StreamDescription* streamOf(const MediaAssetProperties& asset) {
    return asset.audioTracks.empty() || !asset.audioTracks.front().streamDescription
               ? nullptr
               : &*asset.audioTracks.front().streamDescription;
}

Value sampleRate(const MediaAssetProperties& asset) {
    const auto* const stream = streamOf(asset);
    return stream == nullptr ? std::nullopt
                             : Value(platform::format("{:.0f} Hz", stream->sampleRate));
}

Value channels(const MediaAssetProperties& asset) {
    const auto* const stream = streamOf(asset);
    if (stream == nullptr) {
        return std::nullopt;
    }
    switch (stream->channels) {
    case 1: return "Mono";
    case 2: return "Stereo";
    default: return platform::format("{}", stream->channels);
    }
}

Value bitDepth(const MediaAssetProperties& asset) {
    const auto* const stream = streamOf(asset);
    return stream == nullptr || stream->bitsPerChannel == 0
               ? std::nullopt
               : Value(platform::format("{} Bit", stream->bitsPerChannel));
}

using Field = QMMetadataField<MediaAssetProperties>;
constexpr auto plain = &QMMetadataEntry::entryWithKey;
constexpr auto primary = &QMMetadataEntry::primaryEntryWithKey;
constexpr std::string_view sampleRateKey = "sampleRate";

// In the order of display. A field without a value has no entry.
constexpr std::array<Field, 3> fields{{
    {"duration", primary, "meta.audio.duration", duration},
    {"codec", plain, "meta.audio.codec", codec},
    {sampleRateKey, plain, "meta.audio.sampleRate", sampleRate},
}};

// Only along with the sample rate.
constexpr std::array<Field, 2> fieldsOfSampleRate{{
    {"channels", plain, "meta.audio.channels", channels},
    {"bitDepth", plain, "meta.audio.bitDepth", bitDepth},
}};

struct ItemField {
    CommonKey commonKey;
    std::string_view key;
    const char* labelKey;
    decltype(plain) makeEntry;
};

constexpr std::array<ItemField, 3> itemFields{{
    {CommonKey::title, "title", "meta.audio.title", primary},
    {CommonKey::artist, "artist", "meta.audio.artist", primary},
    {CommonKey::albumName, "album", "meta.audio.album", plain},
}};

// An entry for each item, in the file's own order.
void appendItems(const MediaAssetProperties& asset, const QMMetadataService::Keys& enabledKeys,
                 QMMetadataEntries& into) {
    for (const auto& item : asset.commonMetadata) {
        const auto* const field =
            std::ranges::find(itemFields, item.commonKey, &ItemField::commonKey);
        if (field != itemFields.end() && QMMetadataService::containsKey(enabledKeys, field->key)) {
            into.push_back(field->makeEntry(
                std::string(field->key), platform::LocalizedStrings::stringForKey(field->labelKey),
                item.stringValue));
        }
    }
}

} // namespace

void QMMetadataService::extractAudioMetadata(const std::string& path, const Keys& enabledKeys,
                                             QMMetadataEntries& into) const {
    const bool wantsItems = std::ranges::any_of(itemFields, [&enabledKeys](const ItemField& field) {
        return containsKey(enabledKeys, field.key);
    });
    const auto asset = assetPropertiesOfFile(path, wantsItems);
    if (!asset) {
        return;
    }
    qm_appendFields<MediaAssetProperties>(fields, *asset, enabledKeys, into);
    if (containsKey(enabledKeys, sampleRateKey)) {
        qm_appendFields<MediaAssetProperties>(fieldsOfSampleRate, *asset, enabledKeys, into);
    }
    appendItems(*asset, enabledKeys, into);
}
