// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

/// The number that a type, a format or a chunk has which is written as these four characters: the
/// first one is its most significant byte.
[[nodiscard]] constexpr std::uint32_t fourCharCode(std::string_view characters) {
    std::uint32_t code = 0;
    for (const char character : characters) {
        code = (code << 8U) | static_cast<unsigned char>(character);
    }
    return code;
}

} // namespace platform
