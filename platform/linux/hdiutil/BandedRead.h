// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace platform::hdiutil {

/// Reads from a disk that is kept in bands of `bandSize` bytes: calls `readBand(number, offset,
/// buffer)` for each piece of `buffer`, with the offset within the band, until one answers false,
/// and answers whether none did.
template <class ReadBand>
[[nodiscard]] bool readInBands(std::uint64_t bandSize, std::uint64_t offset,
                               std::span<std::byte> buffer, const ReadBand& readBand) {
    while (!buffer.empty()) {
        const std::uint64_t inside = offset % bandSize;
        const auto length =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), bandSize - inside));
        if (!readBand(offset / bandSize, inside, buffer.first(length))) {
            return false;
        }
        buffer = buffer.subspan(length);
        offset += length;
    }
    return true;
}

} // namespace platform::hdiutil
