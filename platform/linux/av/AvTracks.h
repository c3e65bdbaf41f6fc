// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MediaAsset.h"

#include <optional>

struct AVFormatContext;

/// What FFmpeg knows of a file, as properties. Any thread.
namespace platform::av {

/// Whether the headers left open what only the streams themselves can tell.
[[nodiscard]] bool lacksFacts(const AVFormatContext& context);

/// How long the file plays, by what it or its streams say of themselves, in seconds; nullopt
/// where that is nothing.
[[nodiscard]] std::optional<double> durationOf(const AVFormatContext& context);
/// The same after the streams have been looked into. Lengths that follow from the rate of bits
/// count where that never changes, and for formats that have nothing else.
[[nodiscard]] std::optional<double> probedDurationOf(const AVFormatContext& context);

/// Appends the tracks of video and of sound.
void appendTracks(AVFormatContext& context, MediaAssetProperties& asset);

} // namespace platform::av
