// SPDX-License-Identifier: Apache-2.0
#include "services/QMMediaText.h"

#include "model/QMMetadataEntry.h"
#include "platform/Format.h"
#include "platform/Text.h"

#include <algorithm>
#include <limits>

std::uint64_t qm_wholePart(double number) {
    constexpr double beyond = 18446744073709551616.0; // 2 to the 64th
    if (!(number >= 1)) {
        return 0;
    }
    return number < beyond ? static_cast<std::uint64_t>(number)
                           : std::numeric_limits<std::uint64_t>::max();
}

std::string qm_textOfFourCharCode(std::uint32_t code) {
    constexpr unsigned bitsPerByte = 8;
    std::string characters;
    for (unsigned shift = 4 * bitsPerByte; shift > 0; shift -= bitsPerByte) {
        characters.push_back(static_cast<char>((code >> (shift - bitsPerByte)) & 0xFFU));
    }
    characters.resize(std::min(characters.find('\0'), characters.size()));
    return platform::Text::fromUTF8(platform::bytesOf(characters))
        .value_or(std::string(QMMetadataEntry::absentValue));
}

std::optional<std::string>
qm_codecText(const std::optional<platform::MediaAssetProperties::FormatDescription>& format) {
    if (!format) {
        return std::nullopt;
    }
    return format->mediaSubType ? qm_textOfFourCharCode(*format->mediaSubType)
                                : std::string(QMMetadataEntry::absentValue);
}

std::string qm_twoDigits(std::uint64_t number) {
    constexpr std::uint64_t ten = 10;
    return platform::format("{}{}", number < ten ? "0" : "", number);
}
