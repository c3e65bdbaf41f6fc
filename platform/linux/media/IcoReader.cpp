// SPDX-License-Identifier: Apache-2.0
// Icons and cursors of Windows: a directory, with bitmaps without their file header behind it, or
// since Windows Vista whole PNG files (ICONDIR and ICONDIRENTRY in the Windows SDK's
// documentation).
#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/media/ImageFormats.h"

#include <array>
#include <string_view>

namespace platform::media {
namespace {

constexpr std::size_t directorySize = 6;
constexpr std::size_t entrySize = 16;
constexpr std::string_view pngMark = "\x89PNG";
constexpr std::size_t pngHeadSize = 24; // signature, and "IHDR" as far as its two numbers

// A size of 256 is written as 0.
std::int64_t sizeOf(std::byte field) {
    return field == std::byte{0} ? 256 : std::to_integer<std::int64_t>(field);
}

// Whether what an entry leads to begins as a bitmap or as a PNG file does.
bool isImage(DataView image) {
    constexpr std::uint32_t shortestHeader = 12;
    constexpr std::uint32_t longestHeader = 124;
    const auto size = littleEndian<std::uint32_t>(image, 0);
    return hasTextAt(image, 0, pngMark) || (size >= shortestHeader && size <= longestHeader);
}

} // namespace

std::optional<ImageProperties> readIco(const OpenedFile& file, bool wantsImageCount) {
    std::array<std::byte, directorySize + entrySize> head{};
    if (!file.read(0, head)) {
        return std::nullopt;
    }
    const auto count = littleEndian<std::uint16_t>(head, 4);
    const auto entry = DataView(head).subspan(directorySize);
    const std::uint64_t offset = littleEndian<std::uint32_t>(entry, 12);
    std::array<std::byte, pngHeadSize> image{};
    // Few bytes mark an icon, so that the directory has to make sense as well.
    if (count == 0 || offset < directorySize + std::uint64_t{count} * entrySize ||
        !file.read(offset, image) || !isImage(image)) {
        return std::nullopt;
    }
    const bool isPng = hasTextAt(image, 0, pngMark);
    ImageProperties properties;
    properties.pixelWidth = isPng ? bigEndian<std::uint32_t>(image, 16) : sizeOf(entry[0]);
    properties.pixelHeight = isPng ? bigEndian<std::uint32_t>(image, 20) : sizeOf(entry[1]);
    properties.depth = 8;
    properties.colorModel = "RGB";
    // Cursors have a place in the field of the bits, so the bitmap's own header is asked.
    properties.hasAlpha = isPng || littleEndian<std::uint16_t>(image, 14) == 32;
    if (wantsImageCount) {
        properties.imageCount = count;
    }
    return *properties.pixelWidth > 0 && *properties.pixelHeight > 0 ? std::optional(properties)
                                                                     : std::nullopt;
}

} // namespace platform::media
