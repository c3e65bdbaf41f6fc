// SPDX-License-Identifier: Apache-2.0
// TIFF/EP (ISO 12234-2) and the Digital Negative Specification 1.6: the first directory often has a
// small preview, those beneath it the photograph itself.
#include "platform/linux/media/RawPhoto.h"

#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/PhotoBlocks.h"

#include <algorithm>
#include <array>
#include <string>

namespace platform::media {
namespace {

constexpr std::array directories{"SubImage1", "SubImage2", "SubImage3", "SubImage4", "SubImage5",
                                 "SubImage6", "SubImage7", "SubImage8", "SubImage9", "Image"};

std::string fieldOf(const char* directory, const char* field) {
    return std::string("Exif.").append(directory).append(".").append(field);
}

std::optional<std::int64_t> integer(const PhotoTags& tags, const std::string& name) {
    const auto numbers = tags.integers(name);
    return numbers.empty() ? std::nullopt : std::optional(numbers.front());
}

// Whether a directory holds what a sensor saw: one colour for each pixel, or the three that were
// made of them without further processing.
bool isFromSensor(const PhotoTags& tags, const char* directory) {
    constexpr std::int64_t colorFilterArray = 32803;
    constexpr std::int64_t linearRaw = 34892;
    const auto kind = integer(tags, fieldOf(directory, "PhotometricInterpretation")).value_or(0);
    return kind == colorFilterArray || kind == linearRaw;
}

bool isRaw(const PhotoTags& tags) {
    return tags.hasField("Exif.Image.DNGVersion") ||
           std::ranges::any_of(directories, [&tags](const char* directory) {
               return isFromSensor(tags, directory);
           });
}

struct Size {
    std::int64_t width = 0;
    std::int64_t height = 0;

    [[nodiscard]] bool isThere() const { return width > 0 && height > 0; }
};

Size sizeOf(const PhotoTags& tags, const std::string& width, const std::string& height) {
    return {integer(tags, width).value_or(0), integer(tags, height).value_or(0)};
}

// Fills in the largest image that is no preview.
void addLargest(const PhotoTags& tags, ImageProperties& properties) {
    for (const char* directory : directories) {
        const Size size =
            sizeOf(tags, fieldOf(directory, "ImageWidth"), fieldOf(directory, "ImageLength"));
        const bool isPreview = integer(tags, fieldOf(directory, "NewSubfileType")).value_or(0) != 0;
        if (!isPreview && size.isThere() && size.width > properties.pixelWidth.value_or(0)) {
            properties.pixelWidth = size.width;
            properties.pixelHeight = size.height;
            properties.depth = integer(tags, fieldOf(directory, "BitsPerSample"));
        }
    }
}

void addPhotoSize(const PhotoTags& tags, ImageProperties& properties) {
    const Size size = sizeOf(tags, "Exif.Photo.PixelXDimension", "Exif.Photo.PixelYDimension");
    if (size.isThere()) {
        properties.pixelWidth = size.width;
        properties.pixelHeight = size.height;
    }
}

} // namespace

std::optional<ImageProperties> rawPhotoOf(const PhotoTags& tags, bool isCR2) {
    if (!isCR2 && !isRaw(tags)) {
        return std::nullopt;
    }
    ImageProperties properties;
    if (isCR2) {
        addPhotoSize(tags, properties);
    }
    if (!properties.pixelWidth) {
        addLargest(tags, properties);
    }
    if (isCR2) { // the first directory is a picture that the camera has made, in 8 bits
        properties.depth.reset();
    }
    if (!properties.pixelWidth) {
        addPhotoSize(tags, properties);
    }
    properties.colorModel = "RGB";
    if (const auto profile = tags.text("Exif.Image.InterColorProfile")) {
        properties.profileName = nameOfProfile(bytesOf(*profile));
    }
    addPhotoTags(tags, properties);
    return properties.pixelWidth ? std::optional(properties) : std::nullopt;
}

} // namespace platform::media
