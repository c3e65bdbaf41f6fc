// SPDX-License-Identifier: Apache-2.0
// TIFF (Revision 6.0) and BigTIFF, with libtiff; and the raw photographs that have its form.
#include "platform/linux/ByteText.h"
#include "platform/linux/media/BufferedFile.h"
#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/ImageFormats.h"
#include "platform/linux/media/ImageText.h"
#include "platform/linux/media/MappedFile.h"
#include "platform/linux/media/PhotoBlocks.h"
#include "platform/linux/media/RawPhoto.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <memory>
#include <span>

#include <tiffio.h>

namespace platform::media {
namespace {

constexpr std::size_t bufferSize = 4U << 10U;
constexpr tmsize_t largestAllocation = 16 << 20;
constexpr std::uint64_t longestStructure = std::numeric_limits<std::uint32_t>::max();

BufferedFile& fileOf(thandle_t handle) {
    return *static_cast<BufferedFile*>(handle);
}

tmsize_t readBytes(thandle_t handle, void* buffer, tmsize_t size) {
    const auto count = static_cast<std::size_t>(std::max<tmsize_t>(size, 0));
    const std::span bytes(static_cast<std::byte*>(buffer), count);
    return static_cast<tmsize_t>(fileOf(handle).read(bytes));
}

tmsize_t refuseToWrite(thandle_t, void*, tmsize_t) {
    return -1;
}

toff_t seek(thandle_t handle, toff_t offset, int origin) {
    BufferedFile& file = fileOf(handle);
    switch (origin) {
    case SEEK_SET: file.seek(offset); break;
    case SEEK_CUR: file.seek(file.position() + offset); break;
    default: file.seek(file.size() + offset);
    }
    return file.position();
}

int close(thandle_t) {
    return 0;
}

toff_t sizeOf(thandle_t handle) {
    return fileOf(handle).size();
}

int keepQuiet(TIFF*, void*, const char*, const char*, va_list) {
    return 1; // so that nobody else is told
}

struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const { ::TIFFOpenOptionsFree(options); }
};
struct CloseTiff {
    void operator()(TIFF* tiff) const { ::TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

Tiff open(BufferedFile& file) {
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(::TIFFOpenOptionsAlloc());
    if (options == nullptr) {
        return nullptr;
    }
    ::TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), largestAllocation);
    ::TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepQuiet, nullptr);
    ::TIFFOpenOptionsSetWarningHandlerExtR(options.get(), keepQuiet, nullptr);
    // "m": no mapping. "D": the places of the strips are not looked up.
    return Tiff(::TIFFClientOpenExt("image", "rmD", &file, readBytes, refuseToWrite, seek, close,
                                    sizeOf, nullptr, nullptr, options.get()));
}

template <class Number>
std::optional<Number> field(const Tiff& tiff, std::uint32_t tag) {
    Number value{};
    return ::TIFFGetField(tiff.get(), tag, &value) == 1 ? std::optional(value) : std::nullopt;
}

std::optional<std::string> modelOf(std::uint16_t photometric) {
    switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MASK:
    case PHOTOMETRIC_LOGL: return "Gray";
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_PALETTE:
    case PHOTOMETRIC_YCBCR: return "RGB";
    case PHOTOMETRIC_SEPARATED: return "CMYK";
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_ITULAB: return "Lab";
    default: return std::nullopt;
    }
}

bool hasAlpha(const Tiff& tiff) {
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    if (::TIFFGetField(tiff.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1) {
        return false;
    }
    return std::ranges::any_of(std::span(kinds, count), [](std::uint16_t kind) {
        return kind == EXTRASAMPLE_ASSOCALPHA || kind == EXTRASAMPLE_UNASSALPHA;
    });
}

std::optional<std::string> profileNameOf(const Tiff& tiff) {
    std::uint32_t size = 0;
    const void* bytes = nullptr;
    return ::TIFFGetField(tiff.get(), TIFFTAG_ICCPROFILE, &size, &bytes) == 1
               ? nameOfProfile({static_cast<const std::byte*>(bytes), size})
               : std::nullopt;
}

void addResolution(const Tiff& tiff, ImageProperties& properties) {
    std::uint16_t unit = RESUNIT_INCH;
    ::TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_RESOLUTIONUNIT, &unit);
    const auto width = field<float>(tiff, TIFFTAG_XRESOLUTION);
    const auto height = field<float>(tiff, TIFFTAG_YRESOLUTION);
    const bool hasUnit = unit == RESUNIT_INCH || unit == RESUNIT_CENTIMETER;
    const auto isUsable = [](std::optional<float> value) {
        return value && std::isfinite(*value) && *value > 0;
    };
    if (hasUnit && isUsable(width) && isUsable(height)) {
        const double inches = unit == RESUNIT_CENTIMETER ? 2.54 : 1;
        properties.dpiWidth = *width * inches;
        properties.dpiHeight = *height * inches;
    }
}

std::optional<std::string> textOf(const Tiff& tiff, std::uint32_t tag) {
    const auto text = field<const char*>(tiff, tag);
    return text && *text != nullptr ? imageText(*text) : std::nullopt;
}

// What stands in a directory that only libtiff can read, as that of a BigTIFF file.
void addTexts(const Tiff& tiff, ImageProperties& properties) {
    if (!properties.tiff) {
        properties.tiff = {textOf(tiff, TIFFTAG_MAKE), textOf(tiff, TIFFTAG_MODEL),
                           textOf(tiff, TIFFTAG_SOFTWARE), textOf(tiff, TIFFTAG_COPYRIGHT)};
    }
    std::uint32_t size = 0;
    const void* packet = nullptr;
    if (::TIFFGetField(tiff.get(), TIFFTAG_XMLPACKET, &size, &packet) == 1) {
        addXmp({static_cast<const std::byte*>(packet), size}, properties);
    }
}

std::optional<ImageProperties> propertiesOf(const Tiff& tiff) {
    const auto width = field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH);
    const auto height = field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
    if (width.value_or(0) == 0 || height.value_or(0) == 0) {
        return std::nullopt;
    }
    std::uint16_t bits = 1;
    ::TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    ImageProperties properties;
    properties.pixelWidth = *width;
    properties.pixelHeight = *height;
    properties.depth = bits;
    if (const auto photometric = field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC)) {
        properties.colorModel = modelOf(*photometric);
    }
    properties.profileName = profileNameOf(tiff);
    properties.hasAlpha = hasAlpha(tiff);
    addResolution(tiff, properties);
    return properties;
}

} // namespace

std::optional<ImageProperties> readTiff(const OpenedFile& file, bool wantsImageCount) {
    constexpr std::size_t cr2Mark = 8;
    const MappedFile mapped(file, longestStructure);
    const auto tags = PhotoTags::decode(mapped.bytes());
    auto raw = tags ? rawPhotoOf(*tags, hasTextAt(mapped.bytes(), cr2Mark, "CR\2")) : std::nullopt;
    if (raw) {
        raw->imageCount = wantsImageCount ? std::optional<std::uint64_t>(1) : std::nullopt;
        return raw;
    }
    BufferedFile bytes(file, bufferSize);
    const Tiff tiff = open(bytes);
    auto properties = tiff == nullptr ? std::nullopt : propertiesOf(tiff);
    if (properties && tags) {
        addPhotoTags(*tags, *properties);
    }
    if (properties) {
        addTexts(tiff, *properties);
    }
    if (properties && wantsImageCount) {
        properties->imageCount = ::TIFFNumberOfDirectories(tiff.get());
    }
    return properties;
}

} // namespace platform::media
