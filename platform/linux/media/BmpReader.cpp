// SPDX-License-Identifier: Apache-2.0
// Bitmaps of Windows (BITMAPFILEHEADER and the headers up to BITMAPV5HEADER in the Windows SDK's
// documentation) and of OS/2 (BITMAPCOREHEADER, BITMAPINFOHEADER2).
#include "platform/linux/ByteOrder.h"
#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/ImageFormats.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace platform::media {
namespace {

constexpr std::size_t fileHeaderSize = 14;
constexpr std::size_t coreHeaderSize = 12;
constexpr std::size_t shortHeaderSize = 16; // of OS/2 2.x: size, planes and bits alone
constexpr std::size_t infoHeaderSize = 40;
constexpr std::size_t redMaskHeaderSize = 52; // from here on the masks belong to the header
constexpr std::size_t version4HeaderSize = 108;
constexpr std::size_t version5HeaderSize = 124;
constexpr std::uint32_t masksCompression = 3;
constexpr std::uint32_t alphaMasksCompression = 6;
constexpr std::uint32_t sRGBSpace = 0x73524742;     // "sRGB"
constexpr std::uint32_t embeddedSpace = 0x4D424544; // "MBED"

// The header behind the file header, with zeros where the file has a shorter one.
class Header {
public:
    // False unless a header of a known size is there.
    bool read(const OpenedFile& file) {
        std::array<std::byte, 4> size{};
        if (!file.read(fileHeaderSize, size)) {
            return false;
        }
        m_size = littleEndian<std::uint32_t>(size, 0);
        const bool isKnown =
            m_size == coreHeaderSize || m_size == shortHeaderSize || m_size >= infoHeaderSize;
        return isKnown && file.read(fileHeaderSize,
                                    std::span(m_bytes).first(std::min(m_size, m_bytes.size())));
    }

    [[nodiscard]] bool isCore() const { return m_size == coreHeaderSize; }
    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] std::uint16_t shortAt(std::size_t offset) const {
        return littleEndian<std::uint16_t>(m_bytes, offset);
    }
    [[nodiscard]] std::uint32_t longAt(std::size_t offset) const {
        return littleEndian<std::uint32_t>(m_bytes, offset);
    }
    [[nodiscard]] std::int64_t signedAt(std::size_t offset) const {
        return static_cast<std::int32_t>(longAt(offset));
    }

    [[nodiscard]] std::int64_t width() const { return isCore() ? shortAt(4) : signedAt(4); }
    // A negative height says that the first row is the upper one.
    [[nodiscard]] std::int64_t height() const {
        return isCore() ? shortAt(6) : std::abs(signedAt(8));
    }
    [[nodiscard]] unsigned bits() const { return isCore() ? shortAt(10) : shortAt(14); }
    [[nodiscard]] bool hasMasks() const {
        return longAt(16) == masksCompression || longAt(16) == alphaMasksCompression;
    }

private:
    std::size_t m_size = 0;
    std::array<std::byte, version5HeaderSize> m_bytes{};
};

bool isKnownDepth(unsigned bits) {
    static constexpr std::array<unsigned, 8> known{0, 1, 2, 4, 8, 16, 24, 32};
    return std::ranges::find(known, bits) != known.end();
}

// The bits of the red component: by its mask, which stands in longer headers and behind shorter
// ones, otherwise by the whole.
std::int64_t depthOf(const Header& header, const OpenedFile& file) {
    constexpr std::size_t redMask = 40;
    std::array<std::byte, 4> mask{};
    const bool hasMask = header.hasMasks() &&
                         (header.size() == infoHeaderSize || header.size() >= redMaskHeaderSize) &&
                         file.read(fileHeaderSize + redMask, mask);
    const int bits = hasMask ? std::popcount(littleEndian<std::uint32_t>(mask, 0)) : 0;
    if (bits > 0) {
        return bits;
    }
    return header.bits() == 16 ? 5 : 8;
}

void addDensity(const Header& header, ImageProperties& properties) {
    constexpr double inch = 0.0254;
    const std::int64_t width = header.signedAt(24);
    const std::int64_t height = header.signedAt(28);
    if (header.size() >= infoHeaderSize && width > 0 && height > 0) {
        properties.dpiWidth = std::round(static_cast<double>(width) * inch);
        properties.dpiHeight = std::round(static_cast<double>(height) * inch);
    }
}

void addProfile(const Header& header, const OpenedFile& file, ImageProperties& properties) {
    const std::uint32_t space = header.size() >= version4HeaderSize ? header.longAt(56) : 0;
    if (space == sRGBSpace) {
        properties.profileName = sRGBProfileName;
    }
    if (space == embeddedSpace && header.size() >= version5HeaderSize) {
        const std::uint64_t offset = fileHeaderSize + std::uint64_t{header.longAt(112)};
        if (const auto profile = file.bytes(offset, header.longAt(116), maximumProfileSize)) {
            properties.profileName = nameOfProfile(*profile);
        }
    }
}

} // namespace

std::optional<ImageProperties> readBmp(const OpenedFile& file, bool wantsImageCount) {
    Header header;
    if (!header.read(file) || header.width() <= 0 || header.height() == 0 ||
        !isKnownDepth(header.bits())) {
        return std::nullopt;
    }
    const bool hasAlphaMask = header.size() >= version4HeaderSize && header.longAt(52) != 0;
    ImageProperties properties;
    properties.pixelWidth = header.width();
    properties.pixelHeight = header.height();
    properties.depth = depthOf(header, file);
    properties.colorModel = "RGB";
    properties.hasAlpha = hasAlphaMask && (header.bits() == 16 || header.bits() == 32);
    addDensity(header, properties);
    addProfile(header, file, properties);
    if (wantsImageCount) {
        properties.imageCount = 1;
    }
    return properties;
}

} // namespace platform::media
