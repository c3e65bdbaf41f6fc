// SPDX-License-Identifier: Apache-2.0
#include "platform/Format.h"
#include "services/QMMediaText.h"
#include "services/QMMetadataField.h"

#include <array>
#include <cmath>

using platform::MediaAssetProperties;

namespace {

using Value = std::optional<std::string>;

Value duration(const MediaAssetProperties& asset) {
    if (!asset.duration) {
        return std::nullopt;
    }
    constexpr std::uint64_t secondsAnHour = 3600;
    constexpr std::uint64_t secondsAMinute = 60;
    const std::uint64_t seconds = qm_wholePart(*asset.duration);
    const std::uint64_t hours = seconds / secondsAnHour;
    const std::string rest = qm_twoDigits(seconds % secondsAnHour / secondsAMinute) + ":" +
                             qm_twoDigits(seconds % secondsAMinute);
    return hours == 0 ? rest : qm_twoDigits(hours) + ":" + rest;
}

// As displayed: a film that was taken upright and stored on its side is upright.
Value dimensions(const MediaAssetProperties& asset) {
    if (asset.videoTracks.empty()) {
        return std::nullopt;
    }
    const auto& track = asset.videoTracks.front();
    const auto& turn = track.preferredTransform;
    const double width = turn.a * track.naturalWidth + turn.c * track.naturalHeight;
    const double height = turn.b * track.naturalWidth + turn.d * track.naturalHeight;
    return platform::format("{} × {}", qm_wholePart(std::abs(width)),
                            qm_wholePart(std::abs(height)));
}

Value frameRate(const MediaAssetProperties& asset) {
    if (asset.videoTracks.empty() || !(asset.videoTracks.front().nominalFrameRate > 0)) {
        return std::nullopt;
    }
    return platform::format("{:.2f} fps", double{asset.videoTracks.front().nominalFrameRate});
}

Value videoCodec(const MediaAssetProperties& asset) {
    return qm_codecOfFirst(asset.videoTracks);
}

Value audioTracks(const MediaAssetProperties& asset) {
    return platform::format("{}", asset.audioTracks.size());
}

Value audioCodec(const MediaAssetProperties& asset) {
    return qm_codecOfFirst(asset.audioTracks);
}

constexpr auto plain = &QMMetadataEntry::entryWithKey;
constexpr auto primary = &QMMetadataEntry::primaryEntryWithKey;

// In the order of display. A field without a value has no entry.
constexpr std::array<QMMetadataField<MediaAssetProperties>, 6> fields{{
    {"duration", primary, "meta.video.duration", duration},
    {"dimensions", primary, "meta.video.dimensions", dimensions},
    {"frameRate", plain, "meta.video.frameRate", frameRate},
    {"videoCodec", plain, "meta.video.codec", videoCodec},
    {"audioTracks", plain, "meta.video.audioTracks", audioTracks},
    {"audioCodec", plain, "meta.video.audioCodec", audioCodec},
}};

} // namespace

void QMMetadataService::extractVideoMetadata(const std::string& path, const Keys& enabledKeys,
                                             QMMetadataEntries& into) const {
    if (const auto asset = assetPropertiesOfFile(path, false)) {
        qm_appendFields<MediaAssetProperties>(fields, *asset, enabledKeys, into);
    }
}
