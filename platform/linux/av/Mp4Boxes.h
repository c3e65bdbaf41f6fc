// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/ByteOrder.h"
#include "platform/linux/OpenedFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace platform::av {

using BoxType = std::uint32_t;

/// The type that is written with these four characters.
constexpr BoxType boxType(std::string_view name) {
    BoxType result = 0;
    for (const char character : name) {
        result = (result << 8U) | static_cast<unsigned char>(character);
    }
    return result;
}

/// A box of an ISO base media or QuickTime file (ISO/IEC 14496-12, section 4.2), by offsets.
struct Mp4Box {
    BoxType type = 0;
    std::uint64_t head = 0;  ///< where it begins
    std::uint64_t start = 0; ///< of what is in it
    std::uint64_t end = 0;

    [[nodiscard]] std::uint64_t size() const { return end - start; }
};

/// Goes along the boxes of one file, as many in all as a file in its right mind has. One thread.
class Mp4Boxes {
public:
    /// `file` must outlive this.
    explicit Mp4Boxes(const OpenedFile& file)
        : m_file(file) {}

    [[nodiscard]] Mp4Box whole() const { return {0, 0, 0, m_file.size()}; }

    /// Calls `visit` with each box in `parent`, up to the first that is damaged.
    template <class Visit>
    void forEach(const Mp4Box& parent, const Visit& visit) {
        constexpr int maximumBoxes = 1 << 14;
        std::uint64_t offset = parent.start;
        while (m_count < maximumBoxes) {
            const auto box = at(offset, parent.end);
            if (!box) {
                break;
            }
            ++m_count;
            visit(*box);
            offset = box->end;
        }
    }

    /// The box at `offset`, which must lie inside of `end`; nullopt when it does not.
    [[nodiscard]] std::optional<Mp4Box> at(std::uint64_t offset, std::uint64_t end) const {
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
        return Mp4Box{bigEndian<std::uint32_t>(head, 4), offset, offset + used, offset + size};
    }

private:
    const OpenedFile& m_file;
    int m_count = 0;
};

} // namespace platform::av
