// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// What holds of the characters of ASCII, whatever the locale. Bytes of others are left alone.
namespace platform {

[[nodiscard]] constexpr bool isASCII(char character) {
    return static_cast<unsigned char>(character) < 0x80;
}

[[nodiscard]] constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

[[nodiscard]] constexpr bool isLetterOrDigit(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z');
}

/// The small letter of a capital; what is none as it is.
[[nodiscard]] constexpr char lowercaseASCII(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

[[nodiscard]] inline std::string lowercaseASCII(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        character = lowercaseASCII(character);
    }
    return result;
}

[[nodiscard]] constexpr bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char first, char second) { return lowercaseASCII(first) == lowercaseASCII(second); });
}

[[nodiscard]] constexpr bool startsWithIgnoringCase(std::string_view text, std::string_view start) {
    return equalsIgnoringCase(text.substr(0, start.size()), start);
}

} // namespace platform
