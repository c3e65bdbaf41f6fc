// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/linux/hdiutil/ImageState.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace platform::hdiutil {

/// What is known of a disk that is being expanded, kept in a file beside it until the disk is
/// whole. The format is this tool's own: all numbers big endian, the part that changes at the
/// start, then a description that never does, and a digest of the description.
struct ExpansionProgress {
    /// So many bytes from the disk's start on are written, and more may be.
    std::uint64_t written = 0;
    std::uint64_t diskSize = 0; ///< bytes
    /// Of the disk's file, so that a copy of it is not taken for it.
    std::uint64_t diskInode = 0;
    /// The run of the system that wrote the disk; what another wrote may not have reached the disk.
    std::string boot;
    /// Of the image when the disk was begun.
    ImageState state;
    /// The image's path, without links.
    std::string image;

    friend bool operator==(const ExpansionProgress&, const ExpansionProgress&) = default;

    /// The bytes of the file.
    [[nodiscard]] Data serialized() const;
    /// nullopt for anything but what `serialized` makes, and when more is written than there is.
    [[nodiscard]] static std::optional<ExpansionProgress> parse(DataView bytes);

    /// No file is larger.
    static constexpr std::size_t maximumSize = 8192;
    /// What replaces the start of the file when `written` changes, in one piece.
    [[nodiscard]] static std::array<std::byte, 16> startOf(std::uint64_t written);
};

/// Names this run of the system; empty when that is not known. Linux: random(4).
[[nodiscard]] std::string currentBoot();

} // namespace platform::hdiutil
