// SPDX-License-Identifier: Apache-2.0
// The Multi-Picture Format (CIPA DC-007-2009, section 5.2.3: "MP Entry").
#include "platform/linux/media/MultiPicture.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/media/PhotoTags.h"

#include <algorithm>
#include <bit>

namespace platform::media {
namespace {

constexpr std::size_t entrySize = 16;

std::uint64_t longAt(DataView entry, std::size_t offset, std::endian order) {
    return order == std::endian::big ? bigEndian<std::uint32_t>(entry, offset)
                                     : littleEndian<std::uint32_t>(entry, offset);
}

// Places count from the index, which is somewhere behind the beginning of the file.
bool isPicture(DataView entry, std::endian order, std::uint64_t fileSize) {
    constexpr std::uint64_t kindMask = 0xFF0000; // single pictures, several of one subject
    constexpr std::uint64_t several = 0x020000;
    const bool isSeveral = (longAt(entry, 0, order) & kindMask) == several;
    return isSeveral && longAt(entry, 8, order) + longAt(entry, 4, order) <= fileSize;
}

} // namespace

std::uint64_t pictureCount(std::span<std::byte> index, std::uint64_t fileSize) {
    const auto order = hasTextAt(index, 0, "MM") ? std::endian::big : std::endian::little;
    const auto tags = PhotoTags::decode(index);
    const auto text = tags ? tags->text("Exif.Image.0xb002") : std::nullopt;
    std::uint64_t count = 0;
    for (DataView rest = text ? platform::bytesOf(*text) : DataView(); rest.size() >= entrySize;
         rest = rest.subspan(entrySize)) {
        count += isPicture(rest, order, fileSize) ? 1U : 0U;
    }
    return std::max<std::uint64_t>(count, 1);
}

} // namespace platform::media
