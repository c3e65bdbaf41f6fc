// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace platform {

/// Appends the last `digitCount` hexadecimal digits of `number`, with capitals: 16 at the most.
inline void appendHexadecimal(std::string& text, std::uint64_t number, unsigned digitCount) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (unsigned i = digitCount; i > 0; --i) {
        text.push_back(digits[(number >> (4 * (i - 1))) & 0xFU]);
    }
}

/// The number that a hexadecimal digit of either case stands for; nullopt for all else.
[[nodiscard]] inline std::optional<unsigned> hexadecimalDigit(char character) {
    unsigned digit = 0;
    const auto result = std::from_chars(&character, &character + 1, digit, 16);
    return result.ec == std::errc() ? std::optional(digit) : std::nullopt;
}

} // namespace platform
