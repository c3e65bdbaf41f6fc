// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MediaAsset.h"

#include <optional>
#include <string_view>

struct AVStream;

/// The four-character codes of the formats that tracks have. Any thread.
namespace platform::av {

/// What the format of a stream is called: video by the sample entries of ISO base media files and
/// QuickTime (in these files by what they have, whatever it is), sound by the identifiers of Core
/// Audio; else by the four characters that the file has for it. `container` is FFmpeg's name of the
/// file's format. nullopt where there is none.
[[nodiscard]] std::optional<MediaAssetProperties::FourCharCode>
codeOfVideo(const AVStream& stream, std::string_view container);
[[nodiscard]] std::optional<MediaAssetProperties::FourCharCode> codeOfAudio(const AVStream& stream);

/// Whether the sound of a stream is stored as one channel and what tells the other from it.
[[nodiscard]] bool isParametricStereo(const AVStream& stream);

/// Whether files of FFmpeg's format of this name are ISO base media or QuickTime files.
[[nodiscard]] bool isOfMp4Family(std::string_view container);

/// Whether the sound of a stream is stored as samples, each for itself.
[[nodiscard]] bool isPcm(const AVStream& stream);

} // namespace platform::av
