// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/PhotoBlocks.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/ImageText.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace platform::media {
namespace {

using namespace std::string_view_literals;

std::optional<std::string> textOf(const PhotoTags& tags, const char* name) {
    const auto bytes = tags.text(name);
    return bytes ? imageText(*bytes) : std::nullopt;
}

// The field has the photographer's and the editor's notice, with a NUL between them and a blank for
// a photographer who says nothing.
std::optional<std::string> copyrightOf(const PhotoTags& tags) {
    const auto bytes = tags.text("Exif.Image.Copyright");
    if (!bytes) {
        return std::nullopt;
    }
    const auto end = bytes->find('\0');
    auto notice = imageText(*bytes);
    return notice || end == std::string::npos ? notice
                                              : imageText(std::string_view(*bytes).substr(end + 1));
}

// An unknown date is written as blanks and colons.
std::optional<std::string> dateOf(const PhotoTags& tags) {
    auto date = textOf(tags, "Exif.Photo.DateTimeOriginal");
    const bool isKnown = date && date->find_first_not_of(" :") != std::string::npos;
    return isKnown ? date : std::nullopt;
}

// A sensitivity that does not fit into the old field is written there as the largest number that
// does, and stands in a newer one (Exif 2.3, PhotographicSensitivity).
std::vector<std::int64_t> sensitivityOf(const PhotoTags& tags) {
    constexpr std::int64_t seeElsewhere = 65535;
    auto speeds = tags.integers("Exif.Photo.ISOSpeedRatings");
    if (!speeds.empty() && speeds.front() != seeElsewhere) {
        return speeds;
    }
    for (const char* name : {"Exif.Photo.RecommendedExposureIndex",
                             "Exif.Photo.StandardOutputSensitivity", "Exif.Photo.ISOSpeed"}) {
        if (auto found = tags.integers(name); !found.empty()) {
            return found;
        }
    }
    return speeds;
}

ImageProperties::Exif exifOf(const PhotoTags& tags) {
    ImageProperties::Exif exif;
    exif.lensModel = textOf(tags, "Exif.Photo.LensModel");
    exif.exposureTime = tags.number("Exif.Photo.ExposureTime");
    exif.fNumber = tags.number("Exif.Photo.FNumber");
    exif.isoSpeedRatings = sensitivityOf(tags);
    exif.focalLength = tags.number("Exif.Photo.FocalLength");
    const auto equivalent = tags.integers("Exif.Photo.FocalLengthIn35mmFilm");
    if (!equivalent.empty() && equivalent.front() != 0) { // 0 is unknown
        exif.focalLenIn35mmFilm = equivalent.front();
    }
    exif.dateTimeOriginal = dateOf(tags);
    return exif;
}

// Degrees, minutes and seconds. Minutes and seconds may be left out; what has a sign, or no
// denominator, is no position.
std::optional<double> degreesOf(const PhotoTags& tags, const char* name) {
    constexpr std::array<double, 3> divisors{1, 60, 3600};
    double degrees = 0;
    for (std::size_t i = 0; i < divisors.size(); ++i) {
        if (i > 0 && tags.isLeftOut(name, i)) {
            continue;
        }
        const auto part = tags.number(name, i);
        if (!part || *part < 0) {
            return std::nullopt;
        }
        degrees += *part / divisors[i];
    }
    return degrees;
}

ImageProperties::Gps gpsOf(const PhotoTags& tags) {
    return {
        degreesOf(tags, "Exif.GPSInfo.GPSLatitude"), textOf(tags, "Exif.GPSInfo.GPSLatitudeRef"),
        degreesOf(tags, "Exif.GPSInfo.GPSLongitude"), textOf(tags, "Exif.GPSInfo.GPSLongitudeRef")};
}

ImageProperties::Tiff tiffOf(const PhotoTags& tags) {
    return {textOf(tags, "Exif.Image.Make"), textOf(tags, "Exif.Image.Model"),
            textOf(tags, "Exif.Image.Software"), copyrightOf(tags)};
}

// Resolutions count per inch unless the unit says per centimetre, or that there is none.
void addResolution(const PhotoTags& tags, ImageProperties& properties) {
    constexpr std::int64_t inch = 2;
    constexpr std::int64_t centimetre = 3;
    const auto units = tags.integers("Exif.Image.ResolutionUnit");
    const std::int64_t unit = units.empty() ? inch : units.front();
    const auto width = tags.number("Exif.Image.XResolution");
    const auto height = tags.number("Exif.Image.YResolution");
    if (properties.dpiWidth || (unit != inch && unit != centimetre) || !width || !height ||
        *width <= 0 || *height <= 0) {
        return;
    }
    const double perInch = unit == centimetre ? 2.54 : 1;
    properties.dpiWidth = *width * perInch;
    properties.dpiHeight = *height * perInch;
}

} // namespace

void addPhotoTags(const PhotoTags& tags, ImageProperties& properties) {
    if (!properties.exif && tags.hasDirectory("Photo")) {
        properties.exif = exifOf(tags);
    }
    if (!properties.tiff && tags.hasDirectory("Image")) {
        properties.tiff = tiffOf(tags);
    }
    if (!properties.gps && tags.hasDirectory("GPSInfo")) {
        properties.gps = gpsOf(tags);
    }
    if (const auto notice = tags.copyrightNotice(); notice && !properties.iptc) {
        properties.iptc.emplace().copyrightNotice = imageText(*notice);
    }
    addResolution(tags, properties);
    if (const auto packet = tags.xmpPacket()) {
        addXmp(bytesOf(*packet), properties);
    }
}

void addExif(std::span<std::byte> block, ImageProperties& properties) {
    constexpr std::string_view marker = "Exif\0\0"sv;
    if (block.size() > maximumBlockSize) {
        return;
    }
    const auto tags =
        PhotoTags::decode(hasTextAt(block, 0, marker) ? block.subspan(marker.size()) : block);
    if (!tags) {
        return;
    }
    addPhotoTags(*tags, properties);
    if (!properties.exif) { // the block is there, whatever is in it
        properties.exif.emplace();
    }
    const auto spaces = tags->integers("Exif.Photo.ColorSpace");
    if (!properties.profileName && !spaces.empty() && spaces.front() == 1) {
        properties.profileName = sRGBProfileName;
    }
}

void addIptc(DataView record, ImageProperties& properties) {
    if (properties.iptc || record.empty() || record.size() > maximumBlockSize) {
        return;
    }
    const auto notice = copyrightNoticeOfIptc(record);
    properties.iptc.emplace().copyrightNotice = notice ? imageText(*notice) : std::nullopt;
}

namespace {

// Resources of other programs, which have other marks, stand between those of Photoshop.
bool isResource(DataView bytes) {
    constexpr std::array marks{"8BIM"sv, "MeSa"sv, "PHUT"sv, "AgHg"sv, "DCSR"sv};
    return std::ranges::any_of(
        marks, [bytes](std::string_view mark) { return hasTextAt(bytes, 0, mark); });
}

} // namespace

std::optional<DataView> imageResource(DataView resources, std::uint16_t number) {
    constexpr std::size_t headSize = 6; // the signature and the number
    constexpr std::size_t lengthSize = 4;
    while (resources.size() > headSize && isResource(resources)) {
        const bool isWanted =
            hasTextAt(resources, 0, "8BIM") && bigEndian<std::uint16_t>(resources, 4) == number;
        // A name of up to 255 bytes with its length before it, padded to an even size.
        const std::size_t nameSize = std::to_integer<std::size_t>(resources[headSize]) + 1;
        const std::size_t head = headSize + nameSize + nameSize % 2;
        if (resources.size() < head + lengthSize) {
            break;
        }
        const std::size_t length = bigEndian<std::uint32_t>(resources, head);
        resources = resources.subspan(head + lengthSize);
        if (length > resources.size()) {
            break;
        }
        if (isWanted) {
            return resources.first(length);
        }
        resources = resources.subspan(std::min(length + length % 2, resources.size()));
    }
    return std::nullopt;
}

} // namespace platform::media
