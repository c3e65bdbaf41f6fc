// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/MediaAsset.h"

#include <cstddef>
#include <optional>

/// Properties of films and recordings on their way from the process that reads them: CBOR, a list
/// of four: the duration, the video tracks, the audio tracks and the items. Each track and item is
/// a list of its members in the order of the struct, with null for what is absent. Any thread.
namespace platform::worker {

/// How many bytes all texts of an answer may have together, so that it fits into a message.
inline constexpr std::size_t maximumTextSize = std::size_t{64} * 1024;
/// How many tracks of each kind, and how many items, an answer may have.
inline constexpr std::size_t maximumTracks = 256;
inline constexpr std::size_t maximumItems = 1024;

/// The bytes of `asset`. What `decodedMediaAsset` refuses is left out: numbers that are not finite,
/// negative durations, rates and sizes; texts that are not UTF-8 or have a NUL; tracks and items
/// beyond the limits above, counted from the first.
[[nodiscard]] Data encodedMediaAsset(const MediaAssetProperties& asset);

/// Reads them back. The bytes are not trusted: nullopt for anything that `encodedMediaAsset` never
/// writes.
[[nodiscard]] std::optional<MediaAssetProperties> decodedMediaAsset(DataView bytes);

} // namespace platform::worker
