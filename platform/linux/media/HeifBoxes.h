// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/OpenedFile.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace platform::media {

/// What is in a box; all of it is in the file.
struct HeifContent {
    std::uint64_t offset; ///< from the beginning of the file
    std::uint64_t length;
};

/// Goes from box to box in some part of a file. One thread at a time.
class HeifBoxes {
public:
    /// `file` must outlive this.
    HeifBoxes(const OpenedFile& file, const HeifContent& where);

    /// The content of the next box; nullopt at the end, or where sizes make no sense.
    [[nodiscard]] std::optional<HeifContent> next();
    /// Where the next box begins.
    [[nodiscard]] std::uint64_t position() const { return m_next; }
    /// Whether the box that was found last is of that type.
    [[nodiscard]] bool isOf(std::string_view type) const;
    /// The content of the next box of that type; nullopt when there is none, or too many others.
    [[nodiscard]] std::optional<HeifContent> find(std::string_view type);

private:
    const OpenedFile& m_file;
    std::uint64_t m_next;
    std::uint64_t m_end;
    std::array<std::byte, 4> m_type{};
};

/// The boxes that describe the pictures of a HEIF file. Any thread.
[[nodiscard]] std::optional<HeifContent> metaOfHeif(const OpenedFile& file);

/// Whether the pictures of a HEIF file have shades alone, by what their decoders are told: all of
/// them, as the transparency of a coloured picture is a picture of shades. False for what cannot be
/// read. libheif tells this only of decoded pictures. Any thread.
[[nodiscard]] bool isMonochromeHeif(const OpenedFile& file);

/// Where a HEIF file's description ends, behind which there are only the data of the pictures: its
/// end when something else follows them. libheif would load these data, however many there are.
/// Any thread.
[[nodiscard]] std::uint64_t endOfHeifDescription(const OpenedFile& file);

} // namespace platform::media
