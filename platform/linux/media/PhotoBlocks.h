// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/ImageSource.h"
#include "platform/linux/media/PhotoTags.h"

#include <cstddef>
#include <optional>
#include <span>

/// The blocks of photographic data that several formats carry. What `properties` say already stays:
/// what the format itself says of an image counts before what a block says of it. Any thread.
namespace platform::media {

/// More than any block has; larger ones are not looked at.
inline constexpr std::size_t maximumBlockSize = 16U << 20U;

/// Takes what an Exif block says (Exif 2.32: a TIFF structure), with or without the "Exif" and two
/// NULs that some formats put before it. The bytes of the block are changed on the way.
void addExif(std::span<std::byte> block, ImageProperties& properties);

/// The same of a TIFF structure that is decoded.
void addPhotoTags(const PhotoTags& tags, ImageProperties& properties);

/// Takes what an IPTC record says (IPTC-IIM 4.2).
void addIptc(DataView record, ImageProperties& properties);

/// Takes what an XMP packet says (ISO 16684-1) where Exif, TIFF and GPS have said nothing; so it
/// comes after their blocks.
void addXmp(DataView packet, ImageProperties& properties);

/// The bytes of the resource `number` in a sequence of image resources (Adobe Photoshop File
/// Formats Specification, "Image Resource Blocks"); nullopt without it.
[[nodiscard]] std::optional<DataView> imageResource(DataView resources, std::uint16_t number);

/// The resource with an IPTC record.
inline constexpr std::uint16_t iptcResource = 1028;

} // namespace platform::media
