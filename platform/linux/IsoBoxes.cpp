// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/IsoBoxes.h"

#include "platform/linux/ByteOrder.h"

#include <algorithm>
#include <array>

namespace platform {

std::optional<IsoBox> IsoBoxes::find(const IsoBox& parent, std::uint32_t type) {
    auto box = next(parent.start, parent.end);
    while (box && box->type != type) {
        box = next(box->end, parent.end);
    }
    return box;
}

std::optional<IsoBox> IsoBoxes::at(std::uint64_t offset, std::uint64_t end) const {
    constexpr std::uint64_t headSize = 8;
    constexpr std::uint64_t longHeadSize = 16;
    std::array<std::byte, longHeadSize> head{};
    const std::uint64_t found =
        std::min<std::uint64_t>(m_file.readSome(offset, head), end - offset);
    if (found < headSize) {
        return std::nullopt;
    }
    std::uint64_t size = bigEndian<std::uint32_t>(head, 0);
    std::uint64_t used = headSize;
    if (size == 0) {
        size = end - offset; // the last one, to the end
    } else if (size == 1) {
        size = found < longHeadSize ? 0 : bigEndian<std::uint64_t>(head, headSize);
        used = longHeadSize;
    }
    if (size < used || size > end - offset) {
        return std::nullopt;
    }
    return IsoBox{bigEndian<std::uint32_t>(head, 4), offset, offset + used, offset + size};
}

std::optional<IsoBox> IsoBoxes::next(std::uint64_t offset, std::uint64_t end) {
    constexpr int maximumBoxes = 1 << 14;
    return m_count++ < maximumBoxes ? at(offset, end) : std::nullopt;
}

} // namespace platform
