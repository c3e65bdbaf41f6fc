// SPDX-License-Identifier: Apache-2.0
// Volume descriptors: ECMA-119 (ISO 9660), 8, and ECMA-167 part 2, 9, on which UDF rests. The
// extensions: "Joliet Specification" (Microsoft, 1995), "El Torito Bootable CD-ROM Format" 1.0,
// "System Use Sharing Protocol" 1.12 and "Rock Ridge Interchange Protocol" 1.12 (IEEE P1281,
// P1282).
#include "platform/linux/hdiutil/OpticalVolume.h"

#include "platform/Data.h"
#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"
#include "platform/linux/Utf16.h"
#include "platform/linux/Utf8.h"

#include <array>
#include <string_view>

namespace platform::hdiutil {
namespace {

constexpr std::size_t sectorSize = 2048;
constexpr std::uint64_t firstDescriptor = 16;
constexpr std::uint64_t maximumDescriptors = 64;

using Sector = std::array<std::byte, sectorSize>;
using Bytes = std::span<const std::byte>;

// The numbers that an ISO 9660 descriptor begins with.
enum DescriptorType : unsigned { bootRecord = 0, primary = 1, supplementary = 2 };

std::string withoutTrailingBlanks(std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::string primaryLabel(Bytes descriptor) {
    const std::string_view text = charactersOf(descriptor.subspan(40, 32));
    return withoutTrailingBlanks(replacingInvalidUTF8(text.substr(0, text.find('\0'))));
}

// Joliet announces one of three levels of UCS-2 by the escape sequences that select them.
bool isJoliet(Bytes descriptor) {
    return hasTextAt(descriptor, 88, "%/@") || hasTextAt(descriptor, 88, "%/C") ||
           hasTextAt(descriptor, 88, "%/E");
}

// Whether a system use area belongs to Rock Ridge: the indicator of the sharing protocol, and then
// an entry of the attributes or the older one that lists what there is.
bool isRockRidge(Bytes area) {
    if (!hasTextAt(area, 0, "SP\x07\x01\xBE\xEF")) {
        return false;
    }
    while (area.size() >= 4) {
        const auto length = std::to_integer<std::size_t>(area[2]);
        if (hasTextAt(area, 0, "RR") || hasTextAt(area, 0, "PX")) {
            return true;
        }
        if (length < 4 || length > area.size()) {
            return false;
        }
        area = area.subspan(length);
    }
    return false;
}

// Looks at the first record of the root folder, which stands for the folder itself.
bool rootHasRockRidge(const ByteSource& disc, Bytes descriptor) {
    constexpr std::size_t fixedPart = 34; // with the name, which is a single byte
    constexpr std::size_t extendedArchitecturePart = 14;
    const auto blockSize = littleEndian<std::uint16_t>(descriptor, 128);
    const std::uint64_t block = littleEndian<std::uint32_t>(descriptor, 156 + 2);
    std::array<std::byte, 256> record{};
    if (!disc.read(block * blockSize, record)) {
        return false;
    }
    const auto length = std::to_integer<std::size_t>(record[0]);
    if (length < fixedPart || std::to_integer<unsigned>(record[32]) != 1) {
        return false;
    }
    const Bytes area = Bytes(record).subspan(fixedPart, length - fixedPart);
    // On discs of the extended architecture, its own fields come first.
    return isRockRidge(area) || (area.size() > extendedArchitecturePart &&
                                 isRockRidge(area.subspan(extendedArchitecturePart)));
}

class DescriptorReader {
public:
    explicit DescriptorReader(const ByteSource& disc)
        : m_disc(disc) {}

    std::optional<OpticalFeatures> features() {
        // UDF with blocks of 4,096 bytes leaves every other sector blank.
        unsigned unknownInARow = 0;
        for (std::uint64_t i = 0; i < maximumDescriptors && unknownInARow < 2; ++i) {
            Sector sector{};
            if (!m_disc.read((firstDescriptor + i) * sectorSize, sector)) {
                break;
            }
            unknownInARow = take(sector) ? 0 : unknownInARow + 1;
        }
        chooseLabel();
        return m_features.isIso9660 || m_features.isUdf ? std::optional(m_features) : std::nullopt;
    }

private:
    // Takes in what a descriptor says. False when it is none.
    bool take(const Sector& sector) {
        if (hasTextAt(sector, 1, "CD001")) {
            takeIso9660(sector);
        } else if (hasTextAt(sector, 1, "BEA01")) {
            m_isExtendedArea = true;
        } else if (hasTextAt(sector, 1, "NSR02") || hasTextAt(sector, 1, "NSR03")) {
            m_features.isUdf = m_features.isUdf || m_isExtendedArea;
        } else if (hasTextAt(sector, 1, "TEA01")) {
            m_isExtendedArea = false;
        } else {
            return hasTextAt(sector, 1, "BOOT2") || hasTextAt(sector, 1, "CDW02");
        }
        return true;
    }

    void takeIso9660(const Sector& sector) {
        const auto type = std::to_integer<unsigned>(sector[0]);
        if (type == bootRecord && hasTextAt(sector, 7, "EL TORITO SPECIFICATION")) {
            m_features.hasElTorito = true;
        } else if (type == primary && !m_features.isIso9660) {
            m_features.isIso9660 = true;
            m_features.volumeLabel = primaryLabel(sector);
            m_features.hasRockRidge = rootHasRockRidge(m_disc, sector);
        } else if (type == supplementary && isJoliet(sector) && !m_features.hasJoliet) {
            m_features.hasJoliet = true;
            m_jolietLabel = withoutTrailingBlanks(
                utf8FromUtf16(Bytes(sector).subspan(40, 32), std::endian::big));
        }
    }

    // Joliet has room for 16 characters, of whatever script; ISO 9660 for 32, but of ASCII.
    void chooseLabel() {
        if (!m_features.volumeLabel.starts_with(m_jolietLabel)) {
            m_features.volumeLabel = m_jolietLabel;
        }
    }

    const ByteSource& m_disc;
    OpticalFeatures m_features;
    std::string m_jolietLabel;
    bool m_isExtendedArea = false;
};

} // namespace

std::optional<OpticalFeatures> readOpticalFeatures(const ByteSource& disc) {
    return DescriptorReader(disc).features();
}

} // namespace platform::hdiutil
