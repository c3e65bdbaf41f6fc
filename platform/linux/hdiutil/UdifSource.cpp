// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifSource.h"

#include "platform/linux/hdiutil/UdifCodec.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace platform::hdiutil {
namespace {

// A file system's driver goes back and forth between its tables and the files.
constexpr std::size_t maximumKeptChunks = 8;
constexpr std::size_t maximumKeptBytes = std::size_t{32} << 20;

} // namespace

UdifSource::UdifSource(std::shared_ptr<const ByteSource> file, UdifImage image)
    : m_file(std::move(file))
    , m_image(std::move(image)) {}

bool UdifSource::read(std::uint64_t offset, std::span<std::byte> buffer) const {
    if (!isInside(offset, buffer.size(), size())) {
        return false;
    }
    const auto& chunks = m_image.chunks;
    auto next =
        std::ranges::upper_bound(chunks, offset / udifSectorSize, {}, &UdifChunk::firstSector);
    if (next != chunks.begin()) {
        --next;
    }
    for (; next != chunks.end() && !buffer.empty(); ++next) {
        const std::uint64_t start = next->firstSector * udifSectorSize;
        const std::uint64_t end = start + next->sectorCount * udifSectorSize;
        if (end <= offset) {
            continue;
        }
        const auto gap =
            std::min<std::uint64_t>(start > offset ? start - offset : 0, buffer.size());
        std::ranges::fill(buffer.first(gap), std::byte{0});
        buffer = buffer.subspan(gap);
        offset += gap;
        const auto length = std::min<std::uint64_t>(end - offset, buffer.size());
        if (length > 0 && !readChunk(*next, offset - start, buffer.first(length))) {
            return false;
        }
        buffer = buffer.subspan(length);
        offset += length;
    }
    std::ranges::fill(buffer, std::byte{0});
    return true;
}

bool UdifSource::readChunk(const UdifChunk& chunk, std::uint64_t offset,
                           std::span<std::byte> piece) const {
    switch (chunk.kind) {
    case UdifChunk::Kind::zero:
    case UdifChunk::Kind::ignore: std::ranges::fill(piece, std::byte{0}); return true;
    case UdifChunk::Kind::raw: return m_file->read(chunk.dataOffset + offset, piece);
    default: break;
    }
    const Bytes bytes = expanded(chunk);
    if (!bytes) {
        return false;
    }
    std::ranges::copy(std::span(*bytes).subspan(offset, piece.size()), piece.begin());
    return true;
}

UdifSource::Bytes UdifSource::expanded(const UdifChunk& chunk) const {
    if (Bytes bytes = kept(chunk.firstSector)) {
        return bytes;
    }
    if (!canExpand(chunk.kind)) {
        return nullptr;
    }
    // Not under the lock, so that threads expand side by side; now and then the same chunk.
    std::vector<std::byte> packed;
    auto bytes = std::make_shared<std::vector<std::byte>>(chunk.sectorCount * udifSectorSize);
    if (!expandChunkOf(*m_file, chunk, packed, *bytes)) {
        return nullptr;
    }
    keep(chunk.firstSector, bytes);
    return bytes;
}

UdifSource::Bytes UdifSource::kept(std::uint64_t firstSector) const {
    const std::lock_guard lock(m_mutex);
    const auto found = std::ranges::find(m_kept, firstSector, &Kept::firstSector);
    if (found == m_kept.end()) {
        return nullptr;
    }
    std::rotate(found, std::next(found), m_kept.end());
    return m_kept.back().bytes;
}

void UdifSource::keep(std::uint64_t firstSector, const Bytes& bytes) const {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_kept, [&](const Kept& one) { return one.firstSector == firstSector; });
    m_kept.push_back({firstSector, bytes});
    auto total =
        std::accumulate(m_kept.begin(), m_kept.end(), std::size_t{0},
                        [](std::size_t sum, const Kept& one) { return sum + one.bytes->size(); });
    while (m_kept.size() > 1 && (m_kept.size() > maximumKeptChunks || total > maximumKeptBytes)) {
        total -= m_kept.front().bytes->size();
        m_kept.erase(m_kept.begin());
    }
}

} // namespace platform::hdiutil
