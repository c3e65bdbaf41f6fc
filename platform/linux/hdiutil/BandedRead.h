// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
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

/// What `ByteSource::nextData` answers for a disk of `size` bytes that is kept in bands:
/// `nextBand(number)` answers the first one that is kept, of this number or a higher one, or
/// nullopt, and `nextInBand(number, offset)` the same as `nextData` of its bytes, `bandSize` or
/// more when there are none.
template <class NextBand, class NextInBand>
[[nodiscard]] std::uint64_t nextDataInBands(std::uint64_t bandSize, std::uint64_t offset,
                                            std::uint64_t size, const NextBand& nextBand,
                                            const NextInBand& nextInBand) {
    while (offset < size) {
        const std::optional<std::uint64_t> number = nextBand(offset / bandSize);
        if (!number || *number > (size - 1) / bandSize) {
            return size;
        }
        const std::uint64_t start = *number * bandSize;
        const std::uint64_t inside = offset > start ? offset - start : 0;
        const std::uint64_t next = nextInBand(*number, inside);
        if (next < bandSize || size - start <= bandSize) {
            return start + std::min(next, size - start);
        }
        offset = start + bandSize;
    }
    return size;
}

} // namespace platform::hdiutil
