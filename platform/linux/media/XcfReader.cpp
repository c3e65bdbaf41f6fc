// SPDX-License-Identifier: Apache-2.0
// GIMP's own format (its developers' documentation, "xcf.txt").
#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/TextPieces.h"
#include "platform/linux/media/ImageFormats.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <string_view>

namespace platform::media {
namespace {

using namespace std::string_view_literals;

constexpr std::uint64_t headerSize = 26;
constexpr int mostProperties = 256;
constexpr int mostLayers = 256;
// Pointers have 64 bits from here on.
constexpr int longPointerVersion = 11;
constexpr int precisionVersion = 4;

struct Precision {
    std::uint32_t number;
    std::int64_t bits;
};
constexpr std::array version4Precisions{Precision{0, 8}, Precision{1, 16}, Precision{2, 32},
                                        Precision{3, 16}, Precision{4, 32}};
// Hundreds, as each kind of number comes with several ways from light to numbers.
constexpr std::array version5Precisions{Precision{1, 8}, Precision{2, 16}, Precision{3, 32},
                                        Precision{4, 16}, Precision{5, 32}};
constexpr std::array version7Precisions{Precision{1, 8},  Precision{2, 16}, Precision{3, 32},
                                        Precision{5, 16}, Precision{6, 32}, Precision{7, 64}};

std::optional<std::int64_t> bitsOf(int version, std::uint32_t number) {
    const auto search = [](const auto& precisions,
                           std::uint32_t wanted) -> std::optional<std::int64_t> {
        const auto* const found = std::ranges::find(precisions, wanted, &Precision::number);
        return found == precisions.end() ? std::nullopt : std::optional(found->bits);
    };
    if (version == precisionVersion) {
        return search(version4Precisions, number);
    }
    return version < 7 ? search(version5Precisions, number / 100)
                       : search(version7Precisions, number / 100);
}

// "file" for the first version, "v001" and so on for the others.
std::optional<int> versionOf(DataView header) {
    constexpr std::size_t field = 9;
    constexpr std::size_t digits = 3;
    if (hasTextAt(header, field, "file\0"sv)) {
        return 0;
    }
    const bool isVersion = hasTextAt(header, field, "v") && header[field + 4] == std::byte{0};
    return isVersion ? wholeNumber<int>(charactersOf(header.subspan(field + 1, digits)))
                     : std::nullopt;
}

// Goes from number to number.
class Cursor {
public:
    Cursor(const OpenedFile& file, std::uint64_t offset)
        : m_file(file)
        , m_offset(offset) {}

    // The next number; false where the file ends.
    template <class Number>
    bool take(Number& number) {
        std::array<std::byte, sizeof(Number)> bytes{};
        const bool isThere = m_file.read(m_offset, bytes);
        number = isThere ? bigEndian<Number>(bytes, 0) : Number{};
        m_offset += bytes.size();
        return isThere;
    }
    void skip(std::uint64_t count) { m_offset += count; }

private:
    const OpenedFile& m_file;
    std::uint64_t m_offset;
};

void addResolution(Cursor cursor, ImageProperties& properties) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (!cursor.take(width) || !cursor.take(height)) {
        return;
    }
    const double across = std::bit_cast<float>(width);
    const double down = std::bit_cast<float>(height);
    if (std::isfinite(across) && std::isfinite(down) && across > 0 && down > 0) {
        properties.dpiWidth = across;
        properties.dpiHeight = down;
    }
}

// Goes behind the image's own properties; false where they do not end.
bool passProperties(Cursor& cursor, ImageProperties& properties) {
    constexpr std::uint32_t endProperty = 0;
    constexpr std::uint32_t resolutionProperty = 19;
    for (int i = 0; i < mostProperties; ++i) {
        std::uint32_t kind = 0;
        std::uint32_t length = 0;
        if (!cursor.take(kind) || !cursor.take(length)) {
            return false;
        }
        if (kind == endProperty) {
            return true;
        }
        if (kind == resolutionProperty) {
            addResolution(cursor, properties);
        }
        cursor.skip(length);
    }
    return false;
}

// Whether a layer, of the list that the cursor stands at, has transparency: their kinds are odd
// then. nullopt when the list cannot be read.
std::optional<bool> hasTransparentLayer(const OpenedFile& file, Cursor cursor, int version) {
    for (int i = 0; i < mostLayers; ++i) {
        std::uint64_t place = 0;
        std::uint32_t shortPlace = 0;
        const bool isThere =
            version < longPointerVersion ? cursor.take(shortPlace) : cursor.take(place);
        place += shortPlace;
        if (!isThere) {
            return std::nullopt;
        }
        if (place == 0) {
            return false;
        }
        constexpr std::uint64_t sizeLength = 8; // width and height come before the kind
        if (place > file.size()) {
            return std::nullopt;
        }
        Cursor layer(file, place + sizeLength);
        std::uint32_t kind = 0;
        if (!layer.take(kind)) {
            return std::nullopt;
        }
        if (kind % 2 == 1) {
            return true;
        }
    }
    return false;
}

} // namespace

std::optional<ImageProperties> readXcf(const OpenedFile& file, bool wantsImageCount) {
    std::array<std::byte, headerSize> header{};
    if (!file.read(0, header)) {
        return std::nullopt;
    }
    const auto version = versionOf(header);
    const auto width = bigEndian<std::uint32_t>(header, 14);
    const auto height = bigEndian<std::uint32_t>(header, 18);
    const auto baseType = bigEndian<std::uint32_t>(header, 22); // colours, shades, a palette
    if (!version || width == 0 || height == 0 || baseType > 2) {
        return std::nullopt;
    }
    ImageProperties properties;
    properties.pixelWidth = width;
    properties.pixelHeight = height;
    properties.depth = 8;
    properties.colorModel = baseType == 1 ? "Gray" : "RGB";
    Cursor cursor(file, headerSize);
    std::uint32_t precision = 0;
    if (*version >= precisionVersion) {
        properties.depth = cursor.take(precision) ? bitsOf(*version, precision) : std::nullopt;
    }
    if (passProperties(cursor, properties)) {
        properties.hasAlpha = hasTransparentLayer(file, cursor, *version);
    }
    if (wantsImageCount) {
        properties.imageCount = 1;
    }
    return properties;
}

} // namespace platform::media
