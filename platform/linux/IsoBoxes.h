// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/FourCharCode.h"
#include "platform/linux/OpenedFile.h"

#include <cstdint>
#include <optional>

namespace platform {

/// A box of an ISO base media file, such as MP4 and HEIF, or of a QuickTime file (ISO/IEC 14496-12,
/// section 4.2), by offsets in the file. All of it is there.
struct IsoBox {
    std::uint32_t type = 0;  ///< as `fourCharCode` has it
    std::uint64_t head = 0;  ///< where it begins
    std::uint64_t start = 0; ///< of what is in it
    std::uint64_t end = 0;

    [[nodiscard]] std::uint64_t size() const { return end - start; }
};

/// Goes along the boxes of one file, as many in all as a file in its right mind has. One thread.
class IsoBoxes {
public:
    /// `file` must outlive this.
    explicit IsoBoxes(const OpenedFile& file)
        : m_file(file) {}

    [[nodiscard]] IsoBox whole() const { return {0, 0, 0, m_file.size()}; }

    /// Calls `visit` with each box in `parent`, up to the first that is damaged.
    template <class Visit>
    void forEach(const IsoBox& parent, const Visit& visit) {
        for (auto box = next(parent.start, parent.end); box; box = next(box->end, parent.end)) {
            visit(*box);
        }
    }
    /// The first box of that type in `parent`; nullopt when there is none up to the first that is
    /// damaged.
    [[nodiscard]] std::optional<IsoBox> find(const IsoBox& parent, std::uint32_t type);
    /// The box at `offset`, which must not lie behind `end`; nullopt when it goes on behind that.
    [[nodiscard]] std::optional<IsoBox> at(std::uint64_t offset, std::uint64_t end) const;

private:
    [[nodiscard]] std::optional<IsoBox> next(std::uint64_t offset, std::uint64_t end);

    const OpenedFile& m_file;
    int m_count = 0;
};

} // namespace platform
