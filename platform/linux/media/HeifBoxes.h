// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/IsoBoxes.h"

#include <cstdint>
#include <optional>

namespace platform::media {

/// Where a HEIF file describes its pictures.
struct HeifDescription {
    /// What describes them, as a box that begins behind its version; nullopt without one.
    std::optional<IsoBox> meta;
    /// Where the description ends, behind which there are only the data of the pictures: the end of
    /// the file when something else follows them. libheif would load these data, however many there
    /// are.
    std::uint64_t end = 0;
};

/// Goes along the boxes of a file. Any thread.
[[nodiscard]] HeifDescription descriptionOfHeif(const OpenedFile& file);

/// Whether the pictures that `meta` describes have shades alone, by what their decoders are told:
/// all of them, as the transparency of a coloured picture is a picture of shades. False for what
/// cannot be read. libheif tells this only of decoded pictures. Any thread.
[[nodiscard]] bool isMonochromeHeif(const OpenedFile& file, const IsoBox& meta);

} // namespace platform::media
