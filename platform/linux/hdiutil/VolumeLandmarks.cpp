// SPDX-License-Identifier: Apache-2.0
// Where file systems keep what tells them and their names: Microsoft's "FAT32 File System
// Specification" and "exFAT File System Specification", the NTFS documentation of Linux
// (fs/ntfs3/ntfs.h), and Apple's "HFS Plus Volume Format" (TN1150).
#include "platform/linux/hdiutil/VolumeLandmarks.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/ByteText.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace platform::hdiutil {
namespace {

constexpr std::uint64_t beginning = 2U << 20U;
constexpr std::uint64_t end = 128U << 10U;
// More than a cluster of any FAT, or than the first records of an NTFS or a catalog.
constexpr std::uint64_t detail = 128U << 10U;

using Bytes = std::span<const std::byte>;

class Landmarks {
public:
    explicit Landmarks(const ByteSource& bytes)
        : m_bytes(bytes) {}

    std::vector<Stretch> all() {
        add(0, beginning);
        addWhatTheBootSectorPointsTo();
        addCatalog();
        add(m_bytes.size() - std::min(end, m_bytes.size()), end);
        return m_stretches;
    }

private:
    void add(std::uint64_t offset, std::uint64_t length) {
        if (offset < m_bytes.size()) {
            m_stretches.push_back({offset, std::min(length, m_bytes.size() - offset)});
        }
    }

    // The product stays below the volume's size. Those that callers make of fields of a hostile
    // volume have too few bits to wrap around.
    void addUnits(std::uint64_t firstUnit, std::uint64_t unit) {
        if (unit != 0 && firstUnit < m_bytes.size() / unit) {
            add(firstUnit * unit, detail);
        }
    }

    void addWhatTheBootSectorPointsTo() {
        std::array<std::byte, 512> sector{};
        if (!m_bytes.read(0, sector)) {
            return;
        }
        if (hasTextAt(sector, 3, "NTFS    ")) {
            addMasterFileTable(sector);
        } else if (hasTextAt(sector, 3, "EXFAT   ")) {
            addExfatRoot(sector);
        } else if (hasTextAt(sector, 82, "FAT32   ")) {
            addFat32Root(sector);
        }
    }

    // The table's record 3 has the name.
    void addMasterFileTable(Bytes sector) {
        const auto encoded = std::to_integer<std::uint32_t>(sector[13]);
        // Above 128 it is the power of two that a cluster has in sectors, negated.
        const std::uint64_t sectors = encoded <= 128       ? encoded
                                      : 256 - encoded < 32 ? std::uint64_t{1} << (256 - encoded)
                                                           : 0;
        addUnits(littleEndian<std::uint64_t>(sector, 48),
                 littleEndian<std::uint16_t>(sector, 11) * sectors);
    }

    void addExfatRoot(Bytes sector) {
        const auto sectorShift = std::to_integer<unsigned>(sector[108]);
        const auto clusterShift = std::to_integer<unsigned>(sector[109]);
        if (sectorShift > 12 || clusterShift > 25) {
            return;
        }
        const std::uint64_t cluster = littleEndian<std::uint32_t>(sector, 96);
        addSectors(littleEndian<std::uint32_t>(sector, 88), cluster,
                   std::uint64_t{1} << clusterShift, std::uint64_t{1} << sectorShift);
    }

    void addFat32Root(Bytes sector) {
        const std::uint64_t tables =
            std::to_integer<std::uint64_t>(sector[16]) * littleEndian<std::uint32_t>(sector, 36);
        addSectors(littleEndian<std::uint16_t>(sector, 14) + tables,
                   littleEndian<std::uint32_t>(sector, 44),
                   std::to_integer<std::uint64_t>(sector[13]),
                   littleEndian<std::uint16_t>(sector, 11));
    }

    // A cluster of a FAT volume; the first one has the number 2.
    void addSectors(std::uint64_t heap, std::uint64_t cluster, std::uint64_t sectorsPerCluster,
                    std::uint64_t sectorSize) {
        if (cluster >= 2) {
            addUnits(heap + (cluster - 2) * sectorsPerCluster, sectorSize);
        }
    }

    // The volume's name is the key of the first record in the first leaf of the catalog.
    void addCatalog() {
        std::array<std::byte, 512> header{};
        if (!m_bytes.read(1024, header) ||
            !(hasTextAt(header, 0, "H+") || hasTextAt(header, 0, "HX"))) {
            return;
        }
        constexpr std::size_t catalogExtents = 272 + 16;
        const std::uint64_t blockSize = bigEndian<std::uint32_t>(header, 40);
        addUnits(bigEndian<std::uint32_t>(header, catalogExtents), blockSize);
        addFirstLeaf(Bytes(header).subspan(catalogExtents, std::size_t{8} * 8), blockSize);
    }

    void addFirstLeaf(Bytes extents, std::uint64_t blockSize) {
        std::array<std::byte, 64> root{};
        const std::uint64_t start = bigEndian<std::uint32_t>(extents, 0);
        if (blockSize == 0 || start >= m_bytes.size() / blockSize ||
            !m_bytes.read(start * blockSize, root)) {
            return;
        }
        const std::uint64_t leaf = bigEndian<std::uint32_t>(root, 14 + 10);
        std::uint64_t offset = leaf * bigEndian<std::uint16_t>(root, 14 + 18);
        for (std::size_t i = 0; i < extents.size(); i += 8) {
            const std::uint64_t length = bigEndian<std::uint32_t>(extents, i + 4) * blockSize;
            if (offset < length) {
                const std::uint64_t first = bigEndian<std::uint32_t>(extents, i);
                addUnits(first + offset / blockSize, blockSize);
                return;
            }
            offset -= length;
        }
    }

    const ByteSource& m_bytes;
    std::vector<Stretch> m_stretches;
};

} // namespace

std::vector<Stretch> volumeLandmarks(const ByteSource& bytes) {
    return Landmarks(bytes).all();
}

} // namespace platform::hdiutil
