// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MediaAsset.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// How measures of films and recordings are written down. Any thread.

/// The whole part of `number`, 0 for what is below 1 or no number, and the largest integer for what
/// is beyond.
[[nodiscard]] std::uint64_t qm_wholePart(double number);

/// A four-character code as text: its bytes from the most significant one on, up to the first that
/// is zero, blanks included. `QMMetadataEntry::absentValue` when they are not UTF-8.
[[nodiscard]] std::string qm_textOfFourCharCode(std::uint32_t code);

/// What the format of a track is called: nullopt without a description of it, and
/// `QMMetadataEntry::absentValue` for one that has no code.
[[nodiscard]] std::optional<std::string>
qm_codecText(const std::optional<platform::MediaAssetProperties::FormatDescription>& format);

/// The same of the first of these tracks; nullopt when there is none.
template <class Track>
[[nodiscard]] std::optional<std::string> qm_codecOfFirst(const std::vector<Track>& tracks) {
    return tracks.empty() ? std::nullopt : qm_codecText(tracks.front().formatDescription);
}

/// `number` with a zero before it where it has one digit.
[[nodiscard]] std::string qm_twoDigits(std::uint64_t number);
