// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <cstddef>
#include <span>

namespace platform {

/// The unsigned number at `offset` of `bytes`, most significant byte first. The caller has made
/// sure that all of it is there.
template <std::unsigned_integral Number>
[[nodiscard]] Number bigEndian(std::span<const std::byte> bytes, std::size_t offset) {
    Number value = 0;
    for (const std::byte byte : bytes.subspan(offset, sizeof(Number))) {
        value = static_cast<Number>((value << 8U) | std::to_integer<Number>(byte));
    }
    return value;
}

/// The same, least significant byte first.
template <std::unsigned_integral Number>
[[nodiscard]] Number littleEndian(std::span<const std::byte> bytes, std::size_t offset) {
    Number value = 0;
    const auto field = bytes.subspan(offset, sizeof(Number));
    for (std::size_t i = field.size(); i > 0; --i) {
        value = static_cast<Number>((value << 8U) | std::to_integer<Number>(field[i - 1]));
    }
    return value;
}

} // namespace platform
