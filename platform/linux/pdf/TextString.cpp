// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/TextString.h"

#include "platform/Data.h"
#include "platform/linux/ByteOrder.h"
#include "platform/linux/Utf16.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace platform::pdf {
namespace {

using namespace std::string_view_literals;

// So that three of them fit into an answer.
constexpr std::size_t longest = 40U << 10U;

struct Character {
    std::uint8_t code;
    char16_t character;
};

// What differs from ISO 8859-1 (ISO 32000-2, D.3). The three last rows have no character.
constexpr std::array differences{
    Character{0x18, 0x02D8}, Character{0x19, 0x02C7}, Character{0x1A, 0x02C6},
    Character{0x1B, 0x02D9}, Character{0x1C, 0x02DD}, Character{0x1D, 0x02DB},
    Character{0x1E, 0x02DA}, Character{0x1F, 0x02DC}, Character{0x80, 0x2022},
    Character{0x81, 0x2020}, Character{0x82, 0x2021}, Character{0x83, 0x2026},
    Character{0x84, 0x2014}, Character{0x85, 0x2013}, Character{0x86, 0x0192},
    Character{0x87, 0x2044}, Character{0x88, 0x2039}, Character{0x89, 0x203A},
    Character{0x8A, 0x2212}, Character{0x8B, 0x2030}, Character{0x8C, 0x201E},
    Character{0x8D, 0x201C}, Character{0x8E, 0x201D}, Character{0x8F, 0x2018},
    Character{0x90, 0x2019}, Character{0x91, 0x201A}, Character{0x92, 0x2122},
    Character{0x93, 0xFB01}, Character{0x94, 0xFB02}, Character{0x95, 0x0141},
    Character{0x96, 0x0152}, Character{0x97, 0x0160}, Character{0x98, 0x0178},
    Character{0x99, 0x017D}, Character{0x9A, 0x0131}, Character{0x9B, 0x0142},
    Character{0x9C, 0x0153}, Character{0x9D, 0x0161}, Character{0x9E, 0x017E},
    Character{0xA0, 0x20AC}, Character{0x7F, 0xFFFD}, Character{0x9F, 0xFFFD},
    Character{0xAD, 0xFFFD},
};

char16_t characterOf(char byte) {
    const auto code = static_cast<std::uint8_t>(byte);
    const auto* const found = std::ranges::find(differences, code, &Character::code);
    return found == differences.end() ? char16_t{code} : found->character;
}

std::string fromPDFDocEncoding(std::string_view bytes) {
    Data units;
    units.reserve(bytes.size() * 2);
    for (const char byte : bytes) {
        appendBigEndian(units, characterOf(byte), sizeof(char16_t));
    }
    return utf8FromUtf16(units, std::endian::big);
}

std::string decoded(std::string_view bytes) {
    constexpr auto utf16Big = "\xFE\xFF"sv;
    constexpr auto utf16Little = "\xFF\xFE"sv;
    constexpr auto utf8 = "\xEF\xBB\xBF"sv;
    if (bytes.starts_with(utf16Big)) {
        return utf8FromUtf16(bytesOf(bytes.substr(utf16Big.size())), std::endian::big);
    }
    if (bytes.starts_with(utf16Little)) {
        return utf8FromUtf16(bytesOf(bytes.substr(utf16Little.size())), std::endian::little);
    }
    if (bytes.starts_with(utf8)) {
        bytes.remove_prefix(utf8.size());
        return replacingInvalidUTF8(bytes.substr(0, bytes.find('\0')));
    }
    return fromPDFDocEncoding(bytes.substr(0, bytes.find('\0')));
}

bool isInsideCharacter(char byte) {
    constexpr unsigned mask = 0xC0;
    constexpr unsigned continuation = 0x80;
    return (static_cast<unsigned char>(byte) & mask) == continuation;
}

} // namespace

std::string textOfString(std::string_view bytes) {
    // Two bytes become at least one.
    std::string text = decoded(bytes.substr(0, 2 * longest));
    if (text.size() > longest) {
        std::size_t end = longest;
        while (end > 0 && isInsideCharacter(text[end])) {
            --end;
        }
        text.resize(end);
    }
    return text;
}

} // namespace platform::pdf
