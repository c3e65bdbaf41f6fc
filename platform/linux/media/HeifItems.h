// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/IsoBoxes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace platform::media {

/// A number in a file.
struct HeifNumber {
    std::uint64_t offset;
    std::size_t size; ///< in bytes; 8 at most
};

/// Where a HEIF file says how many bytes of data the pictures have that `meta` describes, from its
/// beginning on. Without those of few bytes, and empty for what cannot be read. Any thread.
[[nodiscard]] std::vector<HeifNumber> lengthsOfHeifPictures(const OpenedFile& file,
                                                            const IsoBox& meta);

/// Puts zeros in place of those `numbers` of a file that are among its `bytes` from `offset` on.
/// `numbers` are in order and do not overlap.
void hideNumbers(std::span<const HeifNumber> numbers, std::uint64_t offset,
                 std::span<std::byte> bytes);

} // namespace platform::media
