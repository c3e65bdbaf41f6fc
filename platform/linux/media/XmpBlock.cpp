// SPDX-License-Identifier: Apache-2.0
// Where XMP keeps what Exif and TIFF have fields for: ISO 16684-1, Adobe's "XMP: Additional
// Properties" ("exif:", "tiff:"), and CIPA DC-010 ("exifEX:").
#include "platform/linux/Ascii.h"
#include "platform/linux/TextPieces.h"
#include "platform/linux/media/ImageText.h"
#include "platform/linux/media/PhotoBlocks.h"
#include "platform/linux/media/XmpPacket.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace platform::media {
namespace {

// Keeps what is there.
template <class Value>
void fill(std::optional<Value>& value, std::optional<Value> found) {
    if (!value) {
        value = std::move(found);
    }
}

// The first of the properties that has a text.
std::optional<std::string> textOf(const XmpPacket& packet,
                                  std::initializer_list<std::string_view> names) {
    for (const std::string_view name : names) {
        const auto text = packet.text(name);
        if (auto decoded = text ? imageText(*text) : std::nullopt) {
            return decoded;
        }
    }
    return std::nullopt;
}

// "28/10", or "2.8" as some programs write it.
std::optional<double> numberOf(const XmpPacket& packet, std::string_view name) {
    const auto text = textOf(packet, {name});
    std::string_view rest = text ? *text : std::string_view();
    const auto numerator = takeNumber<double>(rest);
    std::optional<double> denominator = 1;
    if (rest.starts_with('/')) {
        rest.remove_prefix(1);
        denominator = takeNumber<double>(rest);
    }
    if (!numerator || !denominator || *denominator == 0 || !rest.empty()) {
        return std::nullopt;
    }
    const double number = *numerator / *denominator;
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<std::int64_t> integerOf(const XmpPacket& packet,
                                      std::initializer_list<std::string_view> names) {
    const auto text = textOf(packet, names);
    return text ? wholeNumber<std::int64_t>(*text) : std::nullopt;
}

// "2023-07-14T18:30:05+02:00" as Exif writes it: the time that the clocks on the spot showed. The
// seconds may be left out. Anything else is taken as it stands.
std::optional<std::string> dateOf(const XmpPacket& packet) {
    constexpr std::string_view form = "0000-00-00T00:00:00";
    constexpr std::size_t lengthToMinutes = 16;
    auto date = textOf(packet, {"exif:DateTimeOriginal"});
    if (!date) {
        return std::nullopt;
    }
    std::size_t length = 0;
    while (length < std::min(form.size(), date->size())) {
        const char character = (*date)[length];
        if (form[length] == '0' ? !isDigit(character) : character != form[length]) {
            break;
        }
        ++length;
    }
    if (length < lengthToMinutes) {
        return date;
    }
    date->resize(length == form.size() ? length : lengthToMinutes);
    date->append(length == form.size() ? "" : ":00");
    std::ranges::replace(*date, '-', ':');
    (*date)[form.find('T')] = ' ';
    return date;
}

struct Coordinate {
    std::optional<double> degrees;
    std::optional<std::string> reference;
};

// "48,51.504N" or "48,51,30N": degrees, minutes and perhaps seconds, and the direction.
Coordinate coordinateOf(const XmpPacket& packet, std::string_view name) {
    constexpr std::array<double, 3> divisors{1, 60, 3600};
    const auto text = textOf(packet, {name});
    std::string_view rest = text ? *text : std::string_view();
    double degrees = 0;
    for (const double divisor : divisors) {
        const auto part = takeNumber<double>(rest);
        if (!part || !std::isfinite(*part) || *part < 0) {
            return {};
        }
        degrees += *part / divisor;
        if (!rest.starts_with(',')) {
            break;
        }
        rest.remove_prefix(1);
    }
    const bool isReference = rest.size() == 1 && std::string_view("NSEW").find(rest) != rest.npos;
    return isReference ? Coordinate{degrees, std::string(rest)} : Coordinate{};
}

void addTiff(const XmpPacket& packet, std::optional<ImageProperties::Tiff>& block) {
    ImageProperties::Tiff tiff = block.value_or(ImageProperties::Tiff());
    fill(tiff.make, textOf(packet, {"tiff:Make"}));
    fill(tiff.model, textOf(packet, {"tiff:Model"}));
    fill(tiff.software, textOf(packet, {"tiff:Software", "xmp:CreatorTool", "xap:CreatorTool"}));
    fill(tiff.copyright, textOf(packet, {"tiff:Copyright", "dc:rights"}));
    if (tiff != ImageProperties::Tiff()) {
        block = std::move(tiff);
    }
}

void addExif(const XmpPacket& packet, std::optional<ImageProperties::Exif>& block) {
    if (!block && !packet.hasNamespace("exif") && !packet.hasNamespace("exifEX")) {
        return;
    }
    ImageProperties::Exif& exif = block ? *block : block.emplace();
    fill(exif.lensModel, textOf(packet, {"exifEX:LensModel", "aux:Lens"}));
    fill(exif.exposureTime, numberOf(packet, "exif:ExposureTime"));
    fill(exif.fNumber, numberOf(packet, "exif:FNumber"));
    fill(exif.focalLength, numberOf(packet, "exif:FocalLength"));
    fill(exif.dateTimeOriginal, dateOf(packet));
    const auto equivalent = integerOf(packet, {"exif:FocalLengthIn35mmFilm"});
    fill(exif.focalLenIn35mmFilm, equivalent == 0 ? std::nullopt : equivalent); // 0 is unknown
    const auto speed =
        integerOf(packet, {"exifEX:PhotographicSensitivity", "exif:ISOSpeedRatings"});
    if (speed && exif.isoSpeedRatings.empty()) {
        exif.isoSpeedRatings.push_back(*speed);
    }
}

void addGps(const XmpPacket& packet, std::optional<ImageProperties::Gps>& block) {
    const Coordinate latitude = coordinateOf(packet, "exif:GPSLatitude");
    const Coordinate longitude = coordinateOf(packet, "exif:GPSLongitude");
    const bool isKnown = block && block->latitude && block->longitude;
    if (!isKnown && latitude.degrees && longitude.degrees) {
        block = {latitude.degrees, latitude.reference, longitude.degrees, longitude.reference};
    }
}

} // namespace

void addXmp(DataView packet, ImageProperties& properties) {
    if (packet.size() > maximumBlockSize) {
        return;
    }
    const XmpPacket xmp(charactersOf(packet));
    addTiff(xmp, properties.tiff);
    addExif(xmp, properties.exif);
    addGps(xmp, properties.gps);
}

} // namespace platform::media
