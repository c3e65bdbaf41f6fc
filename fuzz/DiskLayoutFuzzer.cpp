// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a disk with some stretches written, and looks for partitions, the descriptors of
// optical volumes and file systems on it.
//
// The input: a byte of wishes (1: make a GPT's checksums right, 2: ask libblkid), the size of the
// disk in 512 bytes as four bytes, and then stretches: the offset in four bytes, the length in two,
// the contents. Numbers have their least significant byte first.
#include "fuzz/Fuzzing.h"
#include "platform/linux/ByteOrder.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/hdiutil/OpticalVolume.h"
#include "platform/linux/hdiutil/PartitionMap.h"
#include "platform/linux/hdiutil/VolumeLandmarks.h"
#include "platform/linux/hdiutil/VolumeProbe.h"

#include <algorithm>

namespace {

using namespace platform::hdiutil;
using platform::littleEndian;
using Bytes = std::vector<std::byte>;

// A disk of zeros, however large, with some bytes written.
class SparseDisk final : public ByteSource {
public:
    explicit SparseDisk(std::uint64_t size)
        : m_size(size) {}

    void write(std::uint64_t offset, const Bytes& bytes) { m_pieces.push_back({offset, bytes}); }

    [[nodiscard]] std::uint64_t size() const override { return m_size; }
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> buffer) const override {
        if (offset > m_size || buffer.size() > m_size - offset) {
            return false;
        }
        std::ranges::fill(buffer, std::byte{0});
        for (const Piece& piece : m_pieces) {
            const std::uint64_t start = std::max(offset, piece.offset);
            const std::uint64_t end =
                std::min(offset + buffer.size(), piece.offset + piece.bytes.size());
            if (start < end) {
                const auto part = std::span(piece.bytes).subspan(start - piece.offset, end - start);
                std::ranges::copy(part, buffer.subspan(start - offset).begin());
            }
        }
        return true;
    }

private:
    struct Piece {
        std::uint64_t offset;
        Bytes bytes;
    };
    std::uint64_t m_size;
    std::vector<Piece> m_pieces;
};

Bytes crcOf(const Bytes& bytes) {
    std::uint32_t value = ~0U;
    for (const std::byte byte : bytes) {
        value ^= std::to_integer<std::uint32_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            value = (value >> 1U) ^ (0xEDB88320U & (0U - (value & 1U)));
        }
    }
    Bytes result;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        result.push_back(static_cast<std::byte>(~value >> shift));
    }
    return result;
}

// No mutation hits the right checksums by chance.
void seal(SparseDisk& disk, std::uint64_t headerOffset, std::uint32_t blockSize) {
    constexpr std::uint64_t enough = 64U << 10U;
    Bytes header(92);
    if (!disk.read(headerOffset, header)) {
        return;
    }
    const std::uint64_t start = littleEndian<std::uint64_t>(header, 72);
    const std::uint64_t length = std::uint64_t{littleEndian<std::uint32_t>(header, 80)} *
                                 littleEndian<std::uint32_t>(header, 84);
    if (start > disk.size() / blockSize || length > enough) {
        return;
    }
    Bytes entries(length);
    if (disk.read(start * blockSize, entries)) {
        disk.write(headerOffset + 88, crcOf(entries));
    }
    disk.write(headerOffset + 16, Bytes(4));
    header.resize(std::clamp<std::size_t>(littleEndian<std::uint32_t>(header, 12), 92, blockSize));
    if (disk.read(headerOffset, header)) {
        disk.write(headerOffset + 16, crcOf(header));
    }
}

void sealTables(SparseDisk& disk) {
    for (const std::uint32_t blockSize : {512U, 2048U, 4096U}) {
        const std::uint64_t last = disk.size() / blockSize * blockSize;
        for (const std::uint64_t offset : {std::uint64_t{blockSize}, last - blockSize}) {
            Bytes signature(8);
            if (disk.read(offset, signature) && signature[0] == std::byte{'E'}) {
                seal(disk, offset, blockSize);
            }
        }
    }
}

void writePieces(SparseDisk& disk, std::span<const std::byte> input) {
    while (input.size() >= 6) {
        const auto offset = littleEndian<std::uint32_t>(input, 0);
        const auto length =
            std::min<std::size_t>(littleEndian<std::uint16_t>(input, 4), input.size() - 6);
        const auto contents = input.subspan(6, length);
        disk.write(offset, Bytes(contents.begin(), contents.end()));
        input = input.subspan(6 + length);
    }
}

void requireInside(const ByteSource& disk, std::uint64_t offset, std::uint64_t length) {
    fuzzing::require(length > 0 && offset < disk.size() && length <= disk.size() - offset);
}

void checkPartitions(const ByteSource& disk) {
    const PartitionMap map = readPartitionMap(disk);
    fuzzing::require(map.blockSize >= 512 && map.blockSize <= 4096 &&
                     map.partitions.size() <= 1028);
    fuzzing::require(map.scheme != PartitionMap::Scheme::none || map.partitions.empty());
    for (const Partition& partition : map.partitions) {
        requireInside(disk, partition.firstByte, partition.byteLength);
        fuzzing::require(platform::isUTF8(partition.name) && platform::isUTF8(partition.hint));
    }
}

void checkVolumes(const ByteSource& disk, bool asksLibrary) {
    const auto features = readOpticalFeatures(disk);
    fuzzing::require(!features || platform::isUTF8(features->volumeLabel));
    std::uint64_t total = 0;
    for (const Stretch& stretch : volumeLandmarks(disk)) {
        requireInside(disk, stretch.offset, stretch.length);
        total += stretch.length;
    }
    fuzzing::require(total < (4U << 20U));
    const auto volume = asksLibrary ? probeVolume(disk) : std::nullopt;
    fuzzing::require(!volume || (!volume->type.empty() && platform::isUTF8(volume->label)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto input = fuzzing::bytesOf(data, size);
    if (input.size() < 5) {
        return 0;
    }
    const auto wishes = std::to_integer<unsigned>(input[0]);
    SparseDisk disk(std::uint64_t{littleEndian<std::uint32_t>(input, 1)} * 512);
    writePieces(disk, input.subspan(5));
    if ((wishes & 1U) != 0) {
        sealTables(disk);
    }
    checkPartitions(disk);
    checkVolumes(disk, (wishes & 2U) != 0);
    return 0;
}
