// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// Appends the last `digitCount` hexadecimal digits of `number`, with capitals: 16 at the most.
inline void appendHexadecimal(std::string& text, std::uint64_t number, unsigned digitCount) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (unsigned i = digitCount; i > 0; --i) {
        text.push_back(digits[(number >> (4 * (i - 1))) & 0xFU]);
    }
}

} // namespace platform
