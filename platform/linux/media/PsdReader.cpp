// SPDX-License-Identifier: Apache-2.0
// Photoshop documents, ordinary and large ones (Adobe Photoshop File Formats Specification, 2019:
// "File Header Section" and "Image Resource IDs").
#include "platform/linux/ByteOrder.h"
#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/ImageFormats.h"
#include "platform/linux/media/PhotoBlocks.h"

#include <algorithm>
#include <array>
#include <span>

namespace platform::media {
namespace {

constexpr std::size_t headerSize = 26;
constexpr std::uint64_t lengthSize = 4;
constexpr std::uint64_t longestResources = 64U << 20U;
constexpr std::uint16_t resolutionResource = 1005;
constexpr std::uint16_t profileResource = 1039;
constexpr std::uint16_t exifResource = 1058;
constexpr std::uint16_t xmpResource = 1060;

struct Mode {
    std::uint16_t number;
    const char* model;
    std::uint16_t channels;
};
constexpr std::array modes{
    Mode{0, "Gray", 1},                                         // one bit for each pixel
    Mode{1, "Gray", 1}, Mode{2, "RGB", 1},                      // by a palette
    Mode{3, "RGB", 3},  Mode{4, "CMYK", 4}, Mode{8, "Gray", 1}, // several inks for one scale
    Mode{9, "Lab", 3},
};

// The section behind that of the palette; empty where the file ends before it, or is larger than
// anybody makes it.
Data resourcesOf(const OpenedFile& file) {
    const auto lengthAt = [&file](std::uint64_t offset) -> std::optional<std::uint64_t> {
        std::array<std::byte, lengthSize> field{};
        return file.read(offset, field) ? std::optional(bigEndian<std::uint32_t>(field, 0))
                                        : std::nullopt;
    };
    const auto palette = lengthAt(headerSize);
    const std::uint64_t start = headerSize + lengthSize + palette.value_or(0);
    const auto length = palette ? lengthAt(start) : std::nullopt;
    auto bytes = length ? file.bytes(start + lengthSize, *length, longestResources) : std::nullopt;
    return bytes ? std::move(*bytes) : Data();
}

// Always pixels per inch, as a number with 16 bits behind the point, whatever unit is shown. Less
// than one is what programs write that know none.
void addResolution(DataView resource, ImageProperties& properties) {
    constexpr std::size_t verticalOffset = 8;
    if (resource.size() < verticalOffset + lengthSize) {
        return;
    }
    const auto width = bigEndian<std::uint32_t>(resource, 0);
    const auto height = bigEndian<std::uint32_t>(resource, verticalOffset);
    constexpr std::uint32_t one = 65536;
    if (width >= one && height >= one) {
        properties.dpiWidth = static_cast<double>(width) / one;
        properties.dpiHeight = static_cast<double>(height) / one;
    }
}

void addResources(const Data& resources, ImageProperties& properties) {
    if (const auto resolution = imageResource(resources, resolutionResource)) {
        addResolution(*resolution, properties);
    }
    if (const auto profile = imageResource(resources, profileResource)) {
        properties.profileName = nameOfProfile(*profile);
    }
    if (const auto found = imageResource(resources, exifResource); found && !found->empty()) {
        Data block(found->begin(), found->end());
        addExif(block, properties);
    }
    if (const auto packet = imageResource(resources, xmpResource)) {
        addXmp(*packet, properties);
    }
    if (const auto record = imageResource(resources, iptcResource)) {
        addIptc(*record, properties);
    }
}

void addMode(std::uint16_t number, std::uint16_t channels, ImageProperties& properties) {
    const auto* const mode = std::ranges::find(modes, number, &Mode::number);
    if (mode != modes.end()) {
        properties.colorModel = mode->model;
        properties.hasAlpha = channels > mode->channels;
    }
}

} // namespace

std::optional<ImageProperties> readPsd(const OpenedFile& file, bool wantsImageCount) {
    std::array<std::byte, headerSize> header{};
    if (!file.read(0, header)) {
        return std::nullopt;
    }
    const auto version = bigEndian<std::uint16_t>(header, 4);
    const auto height = bigEndian<std::uint32_t>(header, 14);
    const auto width = bigEndian<std::uint32_t>(header, 18);
    if ((version != 1 && version != 2) || width == 0 || height == 0) {
        return std::nullopt;
    }
    ImageProperties properties;
    properties.pixelWidth = width;
    properties.pixelHeight = height;
    properties.depth = bigEndian<std::uint16_t>(header, 22);
    addMode(bigEndian<std::uint16_t>(header, 24), bigEndian<std::uint16_t>(header, 12), properties);
    addResources(resourcesOf(file), properties);
    if (wantsImageCount) {
        properties.imageCount = 1;
    }
    return properties;
}

} // namespace platform::media
