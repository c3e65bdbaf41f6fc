// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <concepts>
#include <cstddef>
#include <cstdint>

namespace platform {

/// The unsigned number that `bytes` are, most significant byte first: the last eight of them.
[[nodiscard]] inline std::uint64_t bigEndian(DataView bytes) {
    std::uint64_t value = 0;
    for (const std::byte byte : bytes) {
        value = (value << 8U) | std::to_integer<std::uint64_t>(byte);
    }
    return value;
}

/// The unsigned number at `offset` of `bytes`, most significant byte first. The caller has made
/// sure that all of it is there.
template <std::unsigned_integral Number>
[[nodiscard]] Number bigEndian(DataView bytes, std::size_t offset) {
    return static_cast<Number>(bigEndian(bytes.subspan(offset, sizeof(Number))));
}

/// Appends the last `count` bytes of `number`, most significant byte first: eight at the most.
inline void appendBigEndian(Data& bytes, std::uint64_t number, std::size_t count) {
    for (std::size_t i = count; i > 0; --i) {
        bytes.push_back(static_cast<std::byte>(number >> (8 * (i - 1))));
    }
}

/// The same, least significant byte first.
template <std::unsigned_integral Number>
[[nodiscard]] Number littleEndian(DataView bytes, std::size_t offset) {
    Number value = 0;
    const auto field = bytes.subspan(offset, sizeof(Number));
    for (std::size_t i = field.size(); i > 0; --i) {
        value = static_cast<Number>((value << 8U) | std::to_integer<Number>(field[i - 1]));
    }
    return value;
}

} // namespace platform
