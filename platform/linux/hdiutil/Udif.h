// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace platform::hdiutil {

/// Sectors of UDIF images are counted in this many bytes, whatever the disk's own are.
inline constexpr std::uint64_t udifSectorSize = 512;

/// The largest expanded size, in bytes, of a compressed chunk that is read. Writers use 256 KiB to
/// 1 MiB; the limit is what one chunk may cost in memory.
inline constexpr std::uint64_t maximumUdifChunkSize = std::uint64_t{64} << 20;

/// A run of sectors of the disk, and where and how the image keeps them.
struct UdifChunk {
    /// `zero` and `ignore` both read as zeros; the latter means that nobody used the sectors.
    enum class Kind : std::uint8_t { zero, raw, ignore, adc, zlib, bzip2, lzfse, lzma };

    Kind kind = Kind::zero;
    /// Counted from the start of the disk, not of the table.
    std::uint64_t firstSector = 0;
    /// Never 0.
    std::uint64_t sectorCount = 0;
    /// In bytes from the start of the image's file; both 0 for `zero` and `ignore`.
    std::uint64_t dataOffset = 0;
    std::uint64_t dataLength = 0;

    friend bool operator==(const UdifChunk&, const UdifChunk&) = default;
};

/// What a UDIF image (".dmg") says of itself.
struct UdifImage {
    /// The size of the disk in sectors; its size in bytes fits in 63 bits.
    std::uint64_t sectorCount = 0;
    /// In bytes from the start of the image's file.
    std::uint64_t dataForkOffset = 0;
    /// Of the data fork: 0 none, 2 CRC-32. Not compared with the data.
    std::uint32_t checksumType = 0;
    /// Upper-case hexadecimal digits.
    std::string checksumValue;
    /// The chunks of all block tables by their first sector; no two overlap.
    std::vector<UdifChunk> chunks;
};

/// Why there is no image.
struct UdifError {
    enum class Kind : std::uint8_t {
        /// The file is something else: there is no trailer at its end, nor at its start.
        notUdif,
        /// The image contradicts itself or its file.
        damaged,
        /// The image uses what this reader does not know.
        unsupported
    };

    Kind kind = Kind::notUdif;
    /// One line for people; empty for `notUdif`.
    std::string reason;
};

/// Reads the trailer and the block tables of the image in `file`, not the chunks. Every chunk of
/// the answer lies within the disk and keeps its data within the file. Any thread; the file may be
/// hostile. What is known of the format is as seen in images.
[[nodiscard]] std::variant<UdifImage, UdifError> readUdif(const ByteSource& file);

} // namespace platform::hdiutil
