// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ExpansionFront.h"

#include <algorithm>
#include <limits>

namespace platform::hdiutil {
namespace {

std::uint64_t endOf(const UdifChunk& chunk) {
    return (chunk.firstSector + chunk.sectorCount) * udifSectorSize;
}

// The first chunk that is not wholly within so many bytes.
std::size_t firstBeyond(const std::vector<UdifChunk>& chunks, std::uint64_t written) {
    const auto found = std::ranges::upper_bound(chunks, written, {}, endOf);
    return static_cast<std::size_t>(found - chunks.begin());
}

} // namespace

ExpansionFront::ExpansionFront(const std::vector<UdifChunk>& chunks, std::uint64_t diskSize,
                               std::size_t workers, const ExpansionStart& start)
    : m_chunks(chunks)
    , m_diskSize(diskSize)
    , m_onWritten(start.onWritten)
    , m_next(firstBeyond(chunks, start.written))
    , m_positions(workers, std::numeric_limits<std::uint64_t>::max())
    , m_told(start.written) {}

const UdifChunk* ExpansionFront::next(std::size_t worker) {
    const std::lock_guard lock(m_mutex);
    const bool isLeft = m_next < m_chunks.size();
    m_positions[worker] = startOf(m_next);
    const UdifChunk* const chunk = isLeft ? &m_chunks[m_next++] : nullptr;
    tell();
    return chunk;
}

void ExpansionFront::reached(std::size_t worker, std::uint64_t byte) {
    const std::lock_guard lock(m_mutex);
    m_positions[worker] = byte;
    tell();
}

// Behind the last chunk there is nothing to write.
std::uint64_t ExpansionFront::startOf(std::size_t index) const {
    return index < m_chunks.size() ? m_chunks[index].firstSector * udifSectorSize : m_diskSize;
}

void ExpansionFront::tell() {
    const std::uint64_t written = std::min(startOf(m_next), std::ranges::min(m_positions));
    if (written > m_told && m_onWritten) {
        m_told = written;
        m_onWritten(written);
    }
}

} // namespace platform::hdiutil
