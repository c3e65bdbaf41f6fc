// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Format.h"
#include "platform/MediaAsset.h"

#include <array>
#include <optional>
#include <string>

/// Puts properties of a film or a recording into one line: "1.50 s" or "no duration", then for each
/// video track "64x48 10.00 avc1", with "turned a b c d" where it is, for each audio track
/// "aac  44100 2 0", for each item "title=text", with " | " between them.
class AssetDescription {
public:
    [[nodiscard]] static std::string
    of(const std::optional<platform::MediaAssetProperties>& properties) {
        return properties ? AssetDescription(*properties).m_text : "nothing";
    }

private:
    using Asset = platform::MediaAssetProperties;

    explicit AssetDescription(const Asset& asset)
        : m_text(asset.duration ? platform::format("{:.2f} s", *asset.duration) : "no duration") {
        for (const Asset::VideoTrack& track : asset.videoTracks) {
            m_text += platform::format(" | {:.0f}x{:.0f} {:.2f} {}", track.naturalWidth,
                                       track.naturalHeight, track.nominalFrameRate,
                                       textOf(track.formatDescription));
            const auto& turn = track.preferredTransform;
            if (turn != Asset::VideoTrack::Transform()) {
                m_text += platform::format(" turned {:.0f} {:.0f} {:.0f} {:.0f}", turn.a, turn.b,
                                           turn.c, turn.d);
            }
        }
        for (const Asset::AudioTrack& track : asset.audioTracks) {
            m_text += " | " + textOf(track.formatDescription);
            if (const auto& stream = track.streamDescription) {
                m_text += platform::format(" {:.0f} {} {}", stream->sampleRate, stream->channels,
                                           stream->bitsPerChannel);
            }
        }
        for (const Asset::MetadataItem& item : asset.commonMetadata) {
            constexpr std::array names{" | title=", " | artist=", " | album="};
            m_text += names.at(static_cast<std::size_t>(item.commonKey));
            m_text += item.stringValue.value_or("(no text)");
        }
    }

    static std::string textOf(const std::optional<Asset::FormatDescription>& format) {
        if (!format) {
            return "undescribed";
        }
        const auto& code = format->mediaSubType;
        if (!code) {
            return "none";
        }
        std::string text;
        for (unsigned shift = 32; shift > 0; shift -= 8) {
            const auto character = static_cast<char>((*code >> (shift - 8)) & 0xFFU);
            const bool isPrintable = character >= ' ' && character <= '~';
            text += isPrintable ? std::string(1, character)
                                : platform::format("<{:x}>", static_cast<unsigned>(character));
        }
        return text;
    }

    std::string m_text;
};
