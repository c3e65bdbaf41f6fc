// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Utf16.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace platform {
namespace {

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

std::vector<char32_t> unitsOf(std::span<const std::byte> field, std::endian order) {
    std::vector<char32_t> units;
    for (std::size_t i = 0; i + 2 <= field.size(); i += 2) {
        units.push_back(order == std::endian::big ? bigEndian<std::uint16_t>(field, i)
                                                  : littleEndian<std::uint16_t>(field, i));
    }
    units.erase(std::find(units.begin(), units.end(), U'\0'), units.end());
    return units;
}

// Ten bits of the character above U+FFFF come from each half.
char32_t joined(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00);
}

} // namespace

std::string utf8FromUtf16(std::span<const std::byte> field, std::endian order) {
    const std::vector<char32_t> units = unitsOf(field, order);
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (isHighSurrogate(units[i]) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
            appendUTF8(text, joined(units[i], units[i + 1]));
            ++i;
        } else {
            const bool isHalf = isHighSurrogate(units[i]) || isLowSurrogate(units[i]);
            appendUTF8(text, isHalf ? replacement : units[i]);
        }
    }
    return text;
}

} // namespace platform
