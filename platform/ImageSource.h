// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// What an image file says of its first image. Texts are UTF-8, without NUL and without the blanks
/// that cameras fill fields with at their end. Absent is what the file does not say.
struct QM_EXPORT ImageProperties {
    /// Exif 2.32, the fields of the Exif IFD.
    struct Exif {
        std::optional<std::string> lensModel;           ///< in the camera's words
        std::optional<double> exposureTime;             ///< seconds
        std::optional<double> fNumber;                  ///< focal length by aperture
        std::vector<std::int64_t> isoSpeedRatings;      ///< empty when there are none
        std::optional<double> focalLength;              ///< millimetres
        std::optional<std::int64_t> focalLenIn35mmFilm; ///< millimetres
        std::optional<std::string> dateTimeOriginal;    ///< as it stands: "2023:07:14 18:30:05"

        friend bool operator==(const Exif&, const Exif&) = default;
    };
    /// TIFF 6.0, the fields of the first directory.
    struct Tiff {
        std::optional<std::string> make;      ///< who made the camera
        std::optional<std::string> model;     ///< the camera's name
        std::optional<std::string> software;  ///< the program that wrote it
        std::optional<std::string> copyright; ///< a notice, in words

        friend bool operator==(const Tiff&, const Tiff&) = default;
    };
    /// Exif 2.32, the GPS IFD. Degrees without a sign; the references are "N", "S", "E" and "W".
    struct Gps {
        std::optional<double> latitude;          ///< degrees
        std::optional<std::string> latitudeRef;  ///< "N" or "S"
        std::optional<double> longitude;         ///< degrees
        std::optional<std::string> longitudeRef; ///< "E" or "W"

        friend bool operator==(const Gps&, const Gps&) = default;
    };
    /// IPTC-IIM 4.2, record 2.
    struct Iptc {
        std::optional<std::string> copyrightNotice; ///< dataset 2:116

        friend bool operator==(const Iptc&, const Iptc&) = default;
    };

    std::optional<std::int64_t> pixelWidth;  ///< as stored, before any orientation
    std::optional<std::int64_t> pixelHeight; ///< as stored, before any orientation
    std::optional<std::int64_t> depth;       ///< bits of each component
    std::optional<std::string> colorModel;   ///< "RGB", "Gray", "CMYK", "Lab"
    std::optional<std::string> profileName;  ///< of the embedded colour profile
    std::optional<double> dpiWidth;          ///< pixels per inch
    std::optional<double> dpiHeight;         ///< pixels per inch
    std::optional<bool> hasAlpha;            ///< whether pixels can be transparent
    /// Blocks: present when the file has one, even if nothing of the above is in it.
    /// @{
    std::optional<Exif> exif;
    std::optional<Tiff> tiff;
    std::optional<Gps> gps;
    std::optional<Iptc> iptc;
    /// @}
    /// How many images (frames, pages, sizes) the file has; absent unless it was asked for.
    std::optional<std::uint64_t> imageCount;

    friend bool operator==(const ImageProperties&, const ImageProperties&) = default;
};

/// Reads the image file at `path`, by its content alone, without decoding pixels. nullopt when it
/// cannot be opened, is no regular file, or is no image that can be read. Counting images may mean
/// walking through the whole file, so it is done only for `wantsImageCount`. Blocks, but not for
/// ever: a file that takes too long counts as one that cannot be read. Any thread.
QM_EXPORT [[nodiscard]] std::optional<ImageProperties>
imagePropertiesOfFile(const std::string& path, bool wantsImageCount);

} // namespace platform
