// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// What a film or a recording says of itself.
struct QM_EXPORT MediaAssetProperties {
    /// A four-character code, its first character in the most significant byte. Those of video and
    /// of audio formats are the ones of QuickTime and of ISO base media files ('avc1'), and for
    /// audio those of Core Audio ('aac ').
    using FourCharCode = std::uint32_t;

    /// What the samples of a track are.
    struct FormatDescription {
        std::optional<FourCharCode> mediaSubType; ///< absent for a format that has no such code

        friend bool operator==(const FormatDescription&, const FormatDescription&) = default;
    };

    /// A track of pictures.
    struct VideoTrack {
        /// Width for display before the track is turned, in square pixels.
        double naturalWidth = 0;
        double naturalHeight = 0; ///< the same of the height
        /// How the track is turned and mirrored: (x, y) becomes (ax + cy, bx + dy).
        struct Transform {
            double a = 1; ///< of x, for x
            double b = 0; ///< of x, for y
            double c = 0; ///< of y, for x
            double d = 1; ///< of y, for y

            friend bool operator==(const Transform&, const Transform&) = default;
        };
        Transform preferredTransform; ///< neither where the file says nothing
        /// Frames a second, on average; 0 when that is not known.
        float nominalFrameRate = 0;
        std::optional<FormatDescription> formatDescription; ///< absent where the file has none

        friend bool operator==(const VideoTrack&, const VideoTrack&) = default;
    };

    /// A track of sound.
    struct AudioTrack {
        /// The sound as it is when it is decoded.
        struct StreamDescription {
            double sampleRate = 0;            ///< hertz
            std::uint32_t channels = 0;       ///< how many
            std::uint32_t bitsPerChannel = 0; ///< 0 for compressed sound

            friend bool operator==(const StreamDescription&, const StreamDescription&) = default;
        };
        std::optional<FormatDescription> formatDescription; ///< absent where the file has none
        std::optional<StreamDescription> streamDescription; ///< absent when it is not known

        friend bool operator==(const AudioTrack&, const AudioTrack&) = default;
    };

    /// A line of what the file says in words, whatever its own name for it is.
    struct MetadataItem {
        /// What formats have in common of their names.
        enum class CommonKey : std::uint8_t { title, artist, albumName };
        CommonKey commonKey = CommonKey::title; ///< what the line tells
        std::optional<std::string> stringValue; ///< UTF-8 without NUL; absent when it is no text

        friend bool operator==(const MetadataItem&, const MetadataItem&) = default;
    };

    std::optional<double> duration; ///< seconds, finite and not negative; absent when not known
    std::vector<VideoTrack> videoTracks; ///< as stored; pictures that are attached are none
    std::vector<AudioTrack> audioTracks; ///< as stored
    /// As stored, all of them, also those that say the same. Empty unless they were asked for.
    std::vector<MetadataItem> commonMetadata;

    friend bool operator==(const MediaAssetProperties&, const MediaAssetProperties&) = default;
};

/// Reads the film or recording at `path`, by its content alone, and no other file, whatever this
/// one refers to. nullopt when it cannot be opened, is no regular file, or is nothing of the kind
/// that can be read. Titles, artists and albums are read only for `wantsMetadata`. Blocks, but not
/// for ever: a file that takes too long counts as one that cannot be read. Any thread.
QM_EXPORT [[nodiscard]] std::optional<MediaAssetProperties>
mediaAssetPropertiesOfFile(const std::string& path, bool wantsMetadata);

} // namespace platform
