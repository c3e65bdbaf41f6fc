// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/ImageReader.h"

#include "platform/linux/ByteText.h"
#include "platform/linux/media/HeifReader.h"
#include "platform/linux/media/ImageFormats.h"
#include "platform/linux/media/PhotoTags.h"

#include <array>
#include <ctime>
#include <exception>
#include <string_view>

namespace platform::media {
namespace {

using namespace std::string_view_literals;

struct Format {
    std::size_t offset;
    std::string_view mark;
    ImageFormatReader* read;
};

// What a file of the format has at its beginning, by the format's own specification. Only the
// first row that fits is tried.
constexpr std::array formats{
    Format{0, "\xFF\xD8\xFF"sv, readJpeg},
    Format{0, "\x89PNG\r\n\x1A\n"sv, readPng},
    Format{0, "GIF8"sv, readGif},
    Format{0, "II*\0"sv, readTiff},
    Format{0, "MM\0*"sv, readTiff},
    Format{0, "II+\0"sv, readTiff},
    Format{0, "MM\0+"sv, readTiff},
    Format{8, "WEBP"sv, readWebP},
    Format{0, "8BPS"sv, readPsd},
    Format{0, "gimp xcf "sv, readXcf},
    Format{4, "ftypheic"sv, readHeif},
    Format{4, "ftypheix"sv, readHeif},
    Format{4, "ftypheim"sv, readHeif},
    Format{4, "ftypheis"sv, readHeif},
    Format{4, "ftyphevc"sv, readHeif},
    Format{4, "ftyphevx"sv, readHeif},
    Format{4, "ftypmif1"sv, readHeif},
    Format{4, "ftypmsf1"sv, readHeif},
    Format{4, "ftypavif"sv, readHeif},
    Format{4, "ftypavis"sv, readHeif},
    Format{0, "BM"sv, readBmp},
    Format{0, "\0\0\1\0"sv, readIco},
    Format{0, "\0\0\2\0"sv, readIco},
};
constexpr std::size_t longestMark = 16;

ImageFormatReader* readerOf(DataView start) {
    for (const Format& format : formats) {
        if (hasTextAt(start, format.offset, format.mark)) {
            return format.read;
        }
    }
    return nullptr;
}

} // namespace

void prepareImageReaders() {
    ::tzset(); // some make texts of dates while they read
    PhotoTags::prepare();
    prepareHeif();
}

std::optional<ImageProperties> readImage(int descriptor, bool wantsImageCount) {
    const auto file = OpenedFile::of(descriptor);
    if (!file) {
        return std::nullopt;
    }
    std::array<std::byte, longestMark> start{};
    const DataView found = DataView(start).first(file->readSome(0, start));
    ImageFormatReader* const read = readerOf(found);
    try {
        return read == nullptr ? std::nullopt : read(*file, wantsImageCount);
    } catch (const std::exception&) { // no memory, or what a library throws at damaged files
        return std::nullopt;
    }
}

} // namespace platform::media
