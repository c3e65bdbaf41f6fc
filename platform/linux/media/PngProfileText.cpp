// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/PngProfileText.h"

#include "platform/linux/Hexadecimal.h"
#include "platform/linux/TextPieces.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace platform::media {
namespace {

constexpr std::string_view blanks = " \t\r\n";

std::string_view withoutBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

// The length that the text gives, which is taken off it together with what comes before.
std::optional<std::size_t> takeLength(std::string_view& text) {
    text = withoutBlanks(text);
    text.remove_prefix(std::min(text.find('\n'), text.size()));
    text = withoutBlanks(text);
    return takeNumber<std::size_t>(text);
}

} // namespace

Data bytesOfProfileText(std::string_view text) {
    const auto length = takeLength(text);
    if (!length || *length > text.size() / 2) {
        return {};
    }
    Data bytes;
    unsigned digits = 1; // those of the byte that is read, beneath a 1
    for (const char character : text) {
        if (blanks.find(character) != std::string_view::npos) {
            continue;
        }
        const auto digit = hexadecimalDigit(character);
        if (!digit) {
            return {};
        }
        digits = digits << 4U | *digit;
        if (digits > 0xFF) {
            bytes.push_back(static_cast<std::byte>(digits & 0xFFU));
            digits = 1;
        }
    }
    return bytes.size() == *length ? bytes : Data();
}

} // namespace platform::media
