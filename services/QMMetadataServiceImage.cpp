// SPDX-License-Identifier: Apache-2.0
#include "platform/DateFormatter.h"
#include "platform/Format.h"
#include "platform/LocalizedStrings.h"
#include "platform/PropertyListReadings.h"
#include "services/QMMetadataField.h"

#include <array>

using platform::DateFormatter;
using platform::ImageProperties;

namespace {

using Value = std::optional<std::string>;
using Exif = ImageProperties::Exif;
using Tiff = ImageProperties::Tiff;

// What the block says, if the file has it.
template <class Block, class T>
std::optional<T> valueIn(const std::optional<Block>& block, std::optional<T> Block::*member) {
    return block ? (*block).*member : std::nullopt;
}

Value dimensions(const ImageProperties& image) {
    if (!image.pixelWidth || !image.pixelHeight) {
        return std::nullopt;
    }
    return platform::format("{} × {} px", *image.pixelWidth, *image.pixelHeight);
}

Value colorDepth(const ImageProperties& image) {
    return image.depth ? Value(platform::format("{} Bit", *image.depth)) : std::nullopt;
}

Value colorModel(const ImageProperties& image) {
    return image.colorModel;
}

Value colorProfile(const ImageProperties& image) {
    return image.profileName;
}

Value dpi(const ImageProperties& image) {
    if (!image.dpiWidth || !image.dpiHeight) {
        return std::nullopt;
    }
    // Without the fraction, which may still tell one from the other.
    const std::int64_t width = platform::integerValue(*image.dpiWidth);
    const std::int64_t height = platform::integerValue(*image.dpiHeight);
    return *image.dpiWidth == *image.dpiHeight ? platform::format("{}", width)
                                               : platform::format("{} × {}", width, height);
}

Value hasAlpha(const ImageProperties& image) {
    return image.hasAlpha ? Value(qm_yesOrNo(*image.hasAlpha)) : std::nullopt;
}

Value animated(const ImageProperties& image) {
    if (image.imageCount.value_or(0) <= 1) {
        return std::nullopt;
    }
    return platform::LocalizedStrings::format("meta.img.frames",
                                              {platform::format("{}", *image.imageCount)});
}

// Only for photographs: a scanner's or a program's name is no camera.
Value camera(const ImageProperties& image) {
    if (!image.exif) {
        return std::nullopt;
    }
    const Value model = valueIn(image.tiff, &Tiff::model);
    return model ? model : valueIn(image.tiff, &Tiff::make);
}

Value lens(const ImageProperties& image) {
    return valueIn(image.exif, &Exif::lensModel);
}

Value exposure(const ImageProperties& image) {
    const auto time = valueIn(image.exif, &Exif::exposureTime);
    if (!time) {
        return std::nullopt;
    }
    return *time < 1.0 ? platform::format("1/{:.0f} s", 1.0 / *time)
                       : platform::format("{:.1f} s", *time);
}

Value aperture(const ImageProperties& image) {
    const auto number = valueIn(image.exif, &Exif::fNumber);
    return number ? Value(platform::format("f/{:.1f}", *number)) : std::nullopt;
}

Value iso(const ImageProperties& image) {
    if (!image.exif || image.exif->isoSpeedRatings.empty()) {
        return std::nullopt;
    }
    return platform::format("{}", image.exif->isoSpeedRatings.front());
}

Value focalLength(const ImageProperties& image) {
    const auto length = valueIn(image.exif, &Exif::focalLength);
    if (!length) {
        return std::nullopt;
    }
    const auto in35mmFilm = valueIn(image.exif, &Exif::focalLenIn35mmFilm);
    return in35mmFilm ? platform::format("{:.1f} mm ({} mm eq.)", *length, *in35mmFilm)
                      : platform::format("{:.1f} mm", *length);
}

// For display what is a date, and everything else as it stands.
std::string textOfDate(const std::string& text) {
    // Never destroyed: workers may still use them while the process ends.
    static const auto& parser = *new DateFormatter("yyyy:MM:dd HH:mm:ss", "en_US_POSIX");
    static const auto& display = *new DateFormatter(DateFormatter::mediumDateAndShortTime());
    const auto date = parser.dateFromString(text);
    return date ? display.stringFromDate(*date) : text;
}

Value dateOriginal(const ImageProperties& image) {
    const Value text = valueIn(image.exif, &Exif::dateTimeOriginal);
    return text ? Value(textOfDate(*text)) : std::nullopt;
}

Value gps(const ImageProperties& image) {
    if (!image.gps || !image.gps->latitude || !image.gps->longitude) {
        return std::nullopt;
    }
    return platform::format("{:.4f}° {}, {:.4f}° {}", *image.gps->latitude,
                            image.gps->latitudeRef.value_or(""), *image.gps->longitude,
                            image.gps->longitudeRef.value_or(""));
}

Value software(const ImageProperties& image) {
    return valueIn(image.tiff, &Tiff::software);
}

Value copyright(const ImageProperties& image) {
    const Value notice = valueIn(image.iptc, &ImageProperties::Iptc::copyrightNotice);
    return notice ? notice : valueIn(image.tiff, &Tiff::copyright);
}

constexpr std::string_view animatedKey = "animated";
constexpr auto plain = &QMMetadataEntry::entryWithKey;

// In the order of display. A field without a value has no entry.
constexpr std::array<QMMetadataField<ImageProperties>, 17> fields{{
    {"dimensions", &QMMetadataEntry::primaryEntryWithKey, "meta.img.dimensions", dimensions},
    {"colorDepth", plain, "meta.img.colorDepth", colorDepth},
    {"colorModel", plain, "meta.img.colorModel", colorModel},
    {"colorProfile", plain, "meta.img.colorProfile", colorProfile},
    {"dpi", plain, "meta.img.dpi", dpi},
    {"hasAlpha", plain, "meta.img.hasAlpha", hasAlpha},
    {animatedKey, plain, "meta.img.animated", animated},
    {"camera", plain, "meta.img.camera", camera},
    {"lens", plain, "meta.img.lens", lens},
    {"exposure", plain, "meta.img.exposure", exposure},
    {"aperture", plain, "meta.img.aperture", aperture},
    {"iso", plain, nullptr, iso, "ISO"},
    {"focalLength", plain, "meta.img.focalLength", focalLength},
    {"dateOriginal", plain, "meta.img.dateOriginal", dateOriginal},
    {"gps", plain, "meta.img.gps", gps},
    {"software", plain, "meta.img.software", software},
    {"copyright", plain, "meta.img.copyright", copyright},
}};

} // namespace

void QMMetadataService::extractImageMetadata(const std::string& path, const Keys& enabledKeys,
                                             QMMetadataEntries& into) const {
    const bool wantsImageCount = containsKey(enabledKeys, animatedKey);
    const auto image = m_settings.imageReader
                           ? m_settings.imageReader(path, wantsImageCount)
                           : platform::imagePropertiesOfFile(path, wantsImageCount);
    if (!image) {
        return;
    }
    qm_appendFields<ImageProperties>(fields, *image, enabledKeys, into);
}
