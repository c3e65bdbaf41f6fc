// SPDX-License-Identifier: Apache-2.0
// Takes the first 64 bytes for the numbers of an image, and the lines behind them for its texts.
#include "fuzz/Fuzzing.h"
#include "platform/DateFormatter.h"
#include "services/QMMetadataService.h"

#include <array>
#include <cstring>

namespace {

using fuzzing::require;
using platform::DateFormatter;
using platform::ImageProperties;

constexpr std::size_t numbers = 8;

ImageProperties propertiesIn(const std::array<double, numbers>& values,
                             const std::vector<std::string>& lines) {
    const auto line = [&lines](std::size_t number) {
        return number < lines.size() ? std::optional(lines[number]) : std::nullopt;
    };
    ImageProperties image;
    std::uint64_t bits = 0;
    std::memcpy(&bits, values.data(), sizeof bits);
    image.pixelWidth = image.pixelHeight = image.depth = static_cast<std::int64_t>(bits);
    image.imageCount = bits;
    image.dpiWidth = values[1];
    image.dpiHeight = values[2];
    image.exif = ImageProperties::Exif{.lensModel = line(1),
                                       .exposureTime = values[3],
                                       .fNumber = values[4],
                                       .isoSpeedRatings = {*image.depth},
                                       .focalLength = values[5],
                                       .focalLenIn35mmFilm = image.depth,
                                       .dateTimeOriginal = line(0)};
    image.tiff = ImageProperties::Tiff{
        .make = line(2), .model = line(3), .software = line(4), .copyright = line(5)};
    image.gps = ImageProperties::Gps{.latitude = values[6],
                                     .latitudeRef = line(6),
                                     .longitude = values[7],
                                     .longitudeRef = line(7)};
    return image;
}

/// A text is shown as it stands, or names a moment that can be written down and read again.
void checkDate(const std::string& text, const std::string& shown) {
    static const DateFormatter formatter("yyyy:MM:dd HH:mm:ss", "en_US_POSIX");
    const auto date = formatter.dateFromString(text);
    if (!date) {
        require(shown == text);
        return;
    }
    require(formatter.dateFromString(formatter.stringFromDate(*date)) == date);
    require(!shown.empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::array<double, numbers> values{};
    if (size < sizeof values) {
        return 0;
    }
    std::memcpy(values.data(), data, sizeof values);
    const auto lines =
        fuzzing::split(fuzzing::textOf(data + sizeof values, size - sizeof values), '\n');

    const auto service =
        QMMetadataService::init({nullptr, [&](const std::string&, bool) {
                                     return std::optional(propertiesIn(values, lines));
                                 }});
    QMMetadataEntries entries;
    service->extractImageMetadata(
        "/x", *QMMetadataService::enabledKeysForCategory(QMMetadataCategoryImageRaster), entries);
    require(entries.size() <= 17);
    for (const auto& entry : entries) {
        require(entry->key && entry->localizedKey && entry->value);
        if (entry->key == "dateOriginal") {
            checkDate(lines.front(), *entry->value);
        }
    }
    return 0;
}
