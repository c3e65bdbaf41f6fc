// SPDX-License-Identifier: Apache-2.0
// PNG and APNG (Portable Network Graphics Specification, Third Edition), with libpng.
#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/ImageFormats.h"
#include "platform/linux/media/ImageText.h"
#include "platform/linux/media/PhotoBlocks.h"
#include "platform/linux/media/PngChunks.h"
#include "platform/linux/media/PngProfileText.h"

#include <cmath>
#include <csetjmp>
#include <string_view>

#include <png.h>

namespace platform::media {
namespace {

constexpr png_alloc_size_t longestChunk = 4U << 20U;

// Reads the chunks of a file. What the library calls must not throw, and between its jump on an
// error and the target no object with a destructor may live.
class Reader {
public:
    explicit Reader(const OpenedFile& file)
        : m_chunks(file)
        , m_png(::png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, escape, ignore))
        , m_info(m_png == nullptr ? nullptr : ::png_create_info_struct(m_png)) {}
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    Reader(Reader&&) = delete;
    Reader& operator=(Reader&&) = delete;
    ~Reader() { ::png_destroy_read_struct(&m_png, &m_info, nullptr); }

    // Whatever stops it, what has been read before counts.
    void read() {
        if (m_info == nullptr || setjmp(png_jmpbuf(m_png)) != 0) { // NOLINT(cert-err52-cpp)
            return;
        }
        ::png_set_user_limits(m_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        ::png_set_chunk_malloc_max(m_png, longestChunk);
        ::png_set_read_fn(m_png, &m_chunks, readBytes);
        ::png_set_read_user_chunk_fn(m_png, &m_frames, takeChunk);
        ::png_read_info(m_png, m_info);
    }

    [[nodiscard]] png_const_structp png() const { return m_png; }
    [[nodiscard]] png_infop info() const { return m_info; }
    [[nodiscard]] std::uint32_t frames() const { return m_frames; }

    [[nodiscard]] bool hasHeader() const {
        return m_info != nullptr && ::png_get_image_width(m_png, m_info) > 0;
    }
    [[nodiscard]] bool has(png_uint_32 chunk) const {
        return ::png_get_valid(m_png, m_info, chunk) != 0;
    }
    // The text with that keyword; empty without one.
    [[nodiscard]] std::string_view text(std::string_view keyword) const {
        png_textp texts = nullptr;
        int count = 0;
        ::png_get_text(m_png, m_info, &texts, &count);
        for (int i = 0; i < count; ++i) {
            const png_text& text = texts[i];
            if (text.text != nullptr && text.key == keyword) {
                // Compressed and international texts give their length in a field of their own.
                return {text.text, text.compression > 0 ? text.itxt_length : text.text_length};
            }
        }
        return {};
    }
    [[nodiscard]] DataView profile() const {
        png_charp name = nullptr;
        png_bytep bytes = nullptr;
        png_uint_32 size = 0;
        int method = 0;
        return ::png_get_iCCP(m_png, m_info, &name, &method, &bytes, &size) == 0
                   ? DataView()
                   : std::as_bytes(std::span(bytes, size));
    }
    [[nodiscard]] std::span<std::byte> exif() const {
        png_bytep bytes = nullptr;
        png_uint_32 size = 0;
        return ::png_get_eXIf_1(m_png, m_info, &size, &bytes) == 0
                   ? std::span<std::byte>()
                   : std::as_writable_bytes(std::span(bytes, size));
    }

private:
    [[noreturn]] static void escape(png_structp png, png_const_charp) { ::png_longjmp(png, 1); }
    static void ignore(png_structp, png_const_charp) {}
    static void readBytes(png_structp png, png_bytep buffer, std::size_t size) {
        auto* const chunks = static_cast<PngChunks*>(::png_get_io_ptr(png));
        if (!chunks->read(std::as_writable_bytes(std::span(buffer, size)))) {
            ::png_error(png, "the file ends");
        }
    }
    static int takeChunk(png_structp png, png_unknown_chunkp chunk) {
        constexpr std::size_t controlSize = 8; // how many frames, how many rounds
        const auto name = std::as_bytes(std::span(chunk->name));
        if (hasTextAt(name, 0, "acTL") && chunk->size == controlSize) {
            const auto bytes = std::as_bytes(std::span(chunk->data, chunk->size));
            *static_cast<std::uint32_t*>(::png_get_user_chunk_ptr(png)) =
                bigEndian<std::uint32_t>(bytes, 0);
        }
        return 1;
    }

    PngChunks m_chunks;
    std::uint32_t m_frames = 0;
    png_structp m_png;
    png_infop m_info;
};

// A density is for printing: what programs write for 72 or 300 an inch is a whole number a metre,
// and is meant to come back as what it was.
void addDensity(const Reader& reader, ImageProperties& properties) {
    constexpr double inch = 0.0254;
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    ::png_get_pHYs(reader.png(), reader.info(), &width, &height, &unit);
    if (unit == PNG_RESOLUTION_METER && width > 0 && height > 0) {
        properties.dpiWidth = std::round(width * inch);
        properties.dpiHeight = std::round(height * inch);
    }
}

void addProfile(const Reader& reader, ImageProperties& properties) {
    properties.profileName = nameOfProfile(reader.profile());
    if (!properties.profileName && reader.has(PNG_INFO_sRGB)) {
        properties.profileName = sRGBProfileName;
    }
}

void addBlocks(const Reader& reader, ImageProperties& properties) {
    if (const auto block = reader.exif(); !block.empty()) {
        addExif(block, properties);
    }
    for (const char* keyword : {"Raw profile type exif", "Raw profile type APP1"}) {
        if (Data block = bytesOfProfileText(reader.text(keyword)); !block.empty()) {
            addExif(block, properties);
        }
    }
    const Data iptc = bytesOfProfileText(reader.text("Raw profile type iptc"));
    addIptc(imageResource(iptc, iptcResource).value_or(iptc), properties);
    addXmp(bytesOf(reader.text("XML:com.adobe.xmp")), properties);
}

// What an Exif block does not say may stand in a text of the file.
void addTexts(const Reader& reader, ImageProperties& properties) {
    auto software = imageText(reader.text("Software"));
    auto copyright = imageText(reader.text("Copyright"));
    if (!software && !copyright) {
        return;
    }
    auto& tiff = properties.tiff ? *properties.tiff : properties.tiff.emplace();
    tiff.software = tiff.software ? tiff.software : std::move(software);
    tiff.copyright = tiff.copyright ? tiff.copyright : std::move(copyright);
}

} // namespace

std::optional<ImageProperties> readPng(const OpenedFile& file, bool wantsImageCount) {
    Reader reader(file);
    reader.read();
    if (!reader.hasHeader()) {
        return std::nullopt;
    }
    const auto colorType = ::png_get_color_type(reader.png(), reader.info());
    ImageProperties properties;
    properties.pixelWidth = ::png_get_image_width(reader.png(), reader.info());
    properties.pixelHeight = ::png_get_image_height(reader.png(), reader.info());
    properties.depth = ::png_get_bit_depth(reader.png(), reader.info());
    properties.colorModel = (colorType & PNG_COLOR_MASK_COLOR) != 0 ? "RGB" : "Gray";
    properties.hasAlpha = (colorType & PNG_COLOR_MASK_ALPHA) != 0 || reader.has(PNG_INFO_tRNS);
    addProfile(reader, properties);
    addDensity(reader, properties);
    addBlocks(reader, properties);
    addTexts(reader, properties);
    if (wantsImageCount) {
        properties.imageCount = std::max<std::uint32_t>(reader.frames(), 1);
    }
    return properties;
}

} // namespace platform::media
