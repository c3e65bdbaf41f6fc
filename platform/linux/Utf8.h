// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Whether the bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing cut off.
[[nodiscard]] bool isUTF8(std::string_view text);

/// Whether it is that and holds no NUL.
[[nodiscard]] inline bool isUTF8WithoutNul(std::string_view text) {
    return text.find('\0') == std::string_view::npos && isUTF8(text);
}

/// The text with U+FFFD in place of what is not well-formed UTF-8, as the Unicode Standard
/// recommends it: one for each longest beginning of a character.
[[nodiscard]] std::string replacingInvalidUTF8(std::string_view text);

/// Appends a character, which is no surrogate and not beyond U+10FFFF, to UTF-8.
void appendUTF8(std::string& text, char32_t character);

} // namespace platform
