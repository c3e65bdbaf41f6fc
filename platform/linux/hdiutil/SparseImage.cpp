// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/SparseImage.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/hdiutil/BandedRead.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <utility>

namespace platform::hdiutil {
namespace {

constexpr std::uint32_t signature = 0x73707273; // "sprs"
constexpr std::uint32_t version = 3;
constexpr std::uint64_t sectorSize = 512;

// A header takes up 4 KiB: its fields, then the numbers of the bands that follow it in the file,
// counted from 1; 0 stands for a place that holds none. When all places are taken and bands are
// still to come, another header follows the last band.
constexpr std::size_t headerSize = 4096;
constexpr std::size_t tableOffset = 64;
using Header = std::array<std::byte, headerSize>;

bool beginsWithSignature(const ByteSource& file, std::uint64_t offset) {
    std::array<std::byte, 4> start{};
    return file.read(offset, start) && bigEndian<std::uint32_t>(start, 0) == signature;
}

} // namespace

bool SparseImage::isSparseImage(const ByteSource& file) {
    return beginsWithSignature(file, 0);
}

std::variant<std::shared_ptr<const SparseImage>, std::string>
SparseImage::open(std::shared_ptr<const ByteSource> file) {
    const std::shared_ptr<SparseImage> image(new SparseImage(std::move(file)));
    if (std::string reason = image->readBands(); !reason.empty()) {
        return reason;
    }
    return image;
}

// Answers why the bands cannot be told, or nothing.
std::string SparseImage::readBands() {
    Header header{};
    if (!m_file->read(0, header) || bigEndian<std::uint32_t>(header, 0) != signature) {
        return "the header of the sparse image is cut off";
    }
    if (bigEndian<std::uint32_t>(header, 4) != version) {
        return "the sparse image is of an unknown version";
    }
    m_bandSize = bigEndian<std::uint32_t>(header, 8) * sectorSize;
    const auto sectors = bigEndian<std::uint32_t>(header, 16);
    if (m_bandSize == 0) {
        return "the sparse image has bands of no size";
    }
    m_size = sectors * sectorSize;
    // Each header is read once, and each lies behind the one before.
    std::uint64_t next = 0;
    do {
        if (std::string reason = readTable(next, next); !reason.empty()) {
            return reason;
        }
    } while (beginsWithSignature(*m_file, next));
    return {};
}

// Reads the table of the header at `header`. `end` becomes the offset behind its bands.
std::string SparseImage::readTable(std::uint64_t header, std::uint64_t& end) {
    Header table{};
    if (!m_file->read(header, table)) {
        return "a header of the sparse image is cut off";
    }
    const std::uint64_t bandCount = (m_size + m_bandSize - 1) / m_bandSize;
    std::uint64_t offset = header + headerSize;
    for (std::size_t at = tableOffset; at < headerSize; at += sizeof(std::uint32_t)) {
        const auto number = bigEndian<std::uint32_t>(table, at);
        if (number == 0) {
            // Nothing comes behind a place that is free.
            offset = std::numeric_limits<std::uint64_t>::max();
            break;
        }
        if (number > bandCount || offset > m_file->size() ||
            !m_bands.emplace(number - 1, offset).second) {
            return "the table of the sparse image is damaged";
        }
        offset += m_bandSize;
    }
    end = offset;
    return {};
}

bool SparseImage::read(std::uint64_t offset, std::span<std::byte> buffer) const {
    return isInside(offset, buffer.size(), m_size) &&
           readInBands(m_bandSize, offset, buffer,
                       [this](std::uint64_t band, std::uint64_t inside, auto piece) {
                           const auto found = m_bands.find(band);
                           if (found == m_bands.end()) {
                               std::ranges::fill(piece, std::byte{0});
                               return true;
                           }
                           return m_file->read(found->second + inside, piece);
                       });
}

// Of a band that is cut off, the end counts as data, so that it is read, and missed.
std::uint64_t SparseImage::nextData(std::uint64_t offset) const {
    return nextDataInBands(
        m_bandSize, offset, m_size,
        [this](std::uint64_t number) {
            const auto band = m_bands.lower_bound(number);
            return band == m_bands.end() ? std::nullopt : std::optional(band->first);
        },
        [this](std::uint64_t number, std::uint64_t inside) {
            const std::uint64_t place = m_bands.at(number);
            return std::max(inside, m_file->nextData(place + inside) - place);
        });
}

std::uint64_t SparseImage::storedBytes() const {
    return m_bands.size() * m_bandSize;
}

} // namespace platform::hdiutil
