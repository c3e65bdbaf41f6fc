// SPDX-License-Identifier: Apache-2.0
// JPEG (ITU-T T.81), with JFIF (ITU-T T.871) and Exif 2.32, with libjpeg-turbo.
#include "platform/linux/ByteText.h"
#include "platform/linux/media/BufferedFile.h"
#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/ImageFormats.h"
#include "platform/linux/media/MultiPicture.h"
#include "platform/linux/media/PhotoBlocks.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <string_view>

#include <jpeglib.h>

namespace platform::media {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t bufferSize = 16U << 10U;
// Segments that are kept are kept in memory; no camera writes as much before the image.
constexpr std::uint64_t longestHeader = 64U << 20U;
constexpr int exifSegment = JPEG_APP0 + 1;
constexpr int profileSegment = JPEG_APP0 + 2;
constexpr int multiPictureSegment = JPEG_APP0 + 2;
constexpr int photoshopSegment = JPEG_APP0 + 13;
constexpr std::string_view xmpMark = "http://ns.adobe.com/xap/1.0/\0"sv; // "XMP: Storage in Files"

// The library's way of reporting errors is to call a function that must not return. Between the
// jump and its target no object with a destructor may live.
struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf escape;
};

struct Source {
    jpeg_source_mgr base;
    BufferedFile* file;
    std::uint64_t delivered;
};

[[noreturn]] void escape(j_common_ptr info) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): it begins with the library's
    std::longjmp(reinterpret_cast<ErrorManager*>(info->err)->escape, 1); // NOLINT(cert-err52-cpp)
}

Source& sourceOf(j_decompress_ptr info) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): it begins with the library's
    return *reinterpret_cast<Source*>(info->src);
}

boolean fill(j_decompress_ptr info) {
    Source& source = sourceOf(info);
    const DataView piece = source.file->next();
    source.delivered += piece.size();
    if (piece.empty() || source.delivered > longestHeader) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the library's base type
        escape(reinterpret_cast<j_common_ptr>(info));
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as bytes
    source.base.next_input_byte = reinterpret_cast<const JOCTET*>(piece.data());
    source.base.bytes_in_buffer = piece.size();
    return TRUE;
}

void skip(j_decompress_ptr info, long count) {
    Source& source = sourceOf(info);
    const auto wanted = static_cast<std::size_t>(std::max(count, 0L));
    const std::size_t buffered = std::min(wanted, source.base.bytes_in_buffer);
    source.base.next_input_byte += buffered;
    source.base.bytes_in_buffer -= buffered;
    source.file->seek(source.file->position() + (wanted - buffered));
}

// Reads a file up to its first scan.
class Header {
public:
    explicit Header(const OpenedFile& file)
        : m_file(file, bufferSize) {
        m_info.err = ::jpeg_std_error(&m_errors.base);
        m_errors.base.error_exit = escape;
        m_errors.base.emit_message = [](j_common_ptr, int) {};
        m_errors.base.output_message = [](j_common_ptr) {};
        m_source.file = &m_file;
        m_source.base.init_source = [](j_decompress_ptr) {};
        m_source.base.fill_input_buffer = fill;
        m_source.base.skip_input_data = skip;
        m_source.base.resync_to_restart = ::jpeg_resync_to_restart;
        m_source.base.term_source = [](j_decompress_ptr) {};
    }
    Header(const Header&) = delete;
    Header& operator=(const Header&) = delete;
    Header(Header&&) = delete;
    Header& operator=(Header&&) = delete;
    ~Header() { ::jpeg_destroy_decompress(&m_info); }

    // Whatever stops it, what has been read before counts.
    void read() {
        if (setjmp(m_errors.escape) != 0) { // NOLINT(cert-err52-cpp): the library's only way
            return;
        }
        ::jpeg_create_decompress(&m_info);
        m_info.src = &m_source.base;
        for (const int segment : {exifSegment, profileSegment, photoshopSegment}) {
            ::jpeg_save_markers(&m_info, segment, 0xFFFF);
        }
        ::jpeg_read_header(&m_info, TRUE);
    }

    [[nodiscard]] const jpeg_decompress_struct& info() const { return m_info; }

    // The colour profile, which may be parted among several segments.
    [[nodiscard]] Data profile() {
        JOCTET* bytes = nullptr;
        unsigned int size = 0;
        if (setjmp(m_errors.escape) != 0) { // NOLINT(cert-err52-cpp): the library's only way
            return {};
        }
        if (::jpeg_read_icc_profile(&m_info, &bytes, &size) == FALSE) {
            return {};
        }
        const auto found = std::as_bytes(std::span(bytes, size));
        Data profile(found.begin(), found.end());
        std::free(bytes); // NOLINT(cppcoreguidelines-no-malloc): the library allocated it
        return profile;
    }

    // What the segments of a kind hold that begin with the mark, one behind the other.
    [[nodiscard]] Data segments(int kind, std::string_view mark) const {
        Data joined;
        for (const auto* segment = m_info.marker_list; segment != nullptr;
             segment = segment->next) {
            const auto bytes = std::as_bytes(std::span(segment->data, segment->data_length));
            if (segment->marker == kind && hasTextAt(bytes, 0, mark)) {
                joined.insert(joined.end(), bytes.begin() + std::ssize(mark), bytes.end());
            }
        }
        return joined;
    }

private:
    BufferedFile m_file;
    ErrorManager m_errors{};
    Source m_source{};
    jpeg_decompress_struct m_info{};
};

// What is stored as YCbCr or YCCK counts as what it stands for.
std::optional<std::string> modelOf(int components) {
    switch (components) {
    case 1: return "Gray";
    case 3: return "RGB";
    case 4: return "CMYK";
    default: return std::nullopt;
    }
}

void addDensity(const jpeg_decompress_struct& info, ImageProperties& properties) {
    constexpr int perInch = 1;
    constexpr int perCentimetre = 2; // 0 says how long pixels are to their height, and no more
    const bool hasUnit = info.density_unit == perInch || info.density_unit == perCentimetre;
    if (info.saw_JFIF_marker == FALSE || !hasUnit || info.X_density == 0 || info.Y_density == 0) {
        return;
    }
    const double inches = info.density_unit == perCentimetre ? 2.54 : 1;
    properties.dpiWidth = info.X_density * inches;
    properties.dpiHeight = info.Y_density * inches;
}

} // namespace

std::optional<ImageProperties> readJpeg(const OpenedFile& file, bool wantsImageCount) {
    Header header(file);
    header.read();
    const jpeg_decompress_struct& info = header.info();
    if (info.image_width == 0 || info.image_height == 0 || info.num_components <= 0) {
        return std::nullopt;
    }
    ImageProperties properties;
    properties.pixelWidth = info.image_width;
    properties.pixelHeight = info.image_height;
    properties.depth = info.data_precision;
    properties.colorModel = modelOf(info.num_components);
    properties.profileName = nameOfProfile(header.profile());
    addDensity(info, properties);
    if (Data block = header.segments(exifSegment, "Exif\0\0"sv); !block.empty()) {
        addExif(block, properties);
    }
    if (const Data packet = header.segments(exifSegment, xmpMark); !packet.empty()) {
        addXmp(packet, properties);
    }
    const Data resources = header.segments(photoshopSegment, "Photoshop 3.0\0"sv);
    if (const auto record = imageResource(resources, iptcResource)) {
        addIptc(*record, properties);
    }
    if (wantsImageCount) {
        Data index = header.segments(multiPictureSegment, "MPF\0"sv);
        properties.imageCount = pictureCount(index, file.size());
    }
    return properties;
}

} // namespace platform::media
