// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifExpander.h"

#include "platform/Format.h"
#include "platform/linux/hdiutil/SparseWrite.h"
#include "platform/linux/hdiutil/UdifCodec.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace platform::hdiutil {
namespace {

constexpr std::uint64_t pieceSize = std::uint64_t{1} << 20;

class Expansion {
public:
    Expansion(const ByteSource& file, const UdifImage& image, int descriptor, std::size_t workers,
              const ExpansionStart& start)
        : m_file(file)
        , m_image(image)
        , m_descriptor(descriptor)
        , m_written(start.written)
        , m_front(image.chunks, image.sectorCount * udifSectorSize, workers, start) {}

    // Whether there is anything to do but to write the chunks.
    bool prepare() {
        if (!std::ranges::all_of(m_image.chunks, canExpand, &UdifChunk::kind)) {
            fail({"lzfse compression is not supported"});
            return false;
        }
        if (!resizeWithHole(m_descriptor, m_written, m_image.sectorCount * udifSectorSize)) {
            failForSystem(errno);
            return false;
        }
        return true;
    }

    // The part of each thread: takes chunks until there are none.
    void work(std::size_t worker) {
        try {
            Buffers buffers;
            while (!m_failed) {
                const UdifChunk* const chunk = m_front.next(worker);
                if (chunk == nullptr) {
                    return;
                }
                expand(*chunk, buffers, worker);
            }
        } catch (const std::bad_alloc&) {
            failForSystem(ENOMEM);
        }
    }

    // Once the threads are done.
    [[nodiscard]] std::optional<ExpansionFailure> failure() const { return m_failure; }

private:
    struct Buffers {
        std::vector<std::byte> packed;
        std::vector<std::byte> expanded;
    };

    void expand(const UdifChunk& chunk, Buffers& buffers, std::size_t worker) {
        switch (chunk.kind) {
        case UdifChunk::Kind::zero:
        case UdifChunk::Kind::ignore: return;
        case UdifChunk::Kind::raw: return copy(chunk, buffers.expanded, worker);
        default: break;
        }
        buffers.expanded.resize(static_cast<std::size_t>(chunk.sectorCount * udifSectorSize));
        if (!expandChunkOf(m_file, chunk, buffers.packed, buffers.expanded)) {
            return failFor(chunk);
        }
        write(chunk.firstSector * udifSectorSize, buffers.expanded);
    }

    // Such a chunk may be the whole disk, so it is gone on with in its middle.
    void copy(const UdifChunk& chunk, std::vector<std::byte>& piece, std::size_t worker) {
        const std::uint64_t start = chunk.firstSector * udifSectorSize;
        const std::uint64_t size = chunk.sectorCount * udifSectorSize;
        std::uint64_t offset = std::max(m_written, start) - start;
        for (; offset < size && !m_failed; offset += piece.size()) {
            m_front.reached(worker, start + offset);
            piece.resize(static_cast<std::size_t>(std::min(pieceSize, size - offset)));
            if (!m_file.read(chunk.dataOffset + offset, piece)) {
                return failFor(chunk);
            }
            write(start + offset, piece);
        }
    }

    void write(std::uint64_t offset, std::span<const std::byte> bytes) {
        if (!writeSparsely(m_descriptor, offset, bytes)) {
            failForSystem(errno);
        }
    }

    void failFor(const UdifChunk& chunk) {
        fail({format("the chunk at sector {} is damaged", chunk.firstSector)});
    }
    void failForSystem(int error) { fail(ExpansionFailure::ofSystem(error)); }
    // The first to fail says why; the others stop.
    void fail(ExpansionFailure failure) {
        const std::lock_guard lock(m_mutex);
        if (!m_failure) {
            m_failure = std::move(failure);
        }
        m_failed = true;
    }

    const ByteSource& m_file;
    const UdifImage& m_image;
    int m_descriptor;
    std::uint64_t m_written;
    ExpansionFront m_front;
    std::atomic<bool> m_failed = false;
    std::mutex m_mutex;
    std::optional<ExpansionFailure> m_failure;
};

// Runs the work on so many threads, or on as many of them as the system grants.
void runOn(std::size_t threads, Expansion& expansion) {
    std::vector<std::jthread> helpers;
    try {
        while (helpers.size() + 1 < threads) {
            const std::size_t worker = helpers.size() + 1;
            helpers.emplace_back([&expansion, worker] { expansion.work(worker); });
        }
    } catch (const std::system_error&) {
        // Slower, but no less right.
    }
    expansion.work(0);
}

} // namespace

ExpansionFailure ExpansionFailure::ofSystem(int error) {
    return {std::generic_category().message(error), true, error == ENOSPC || error == EDQUOT};
}

std::optional<ExpansionFailure> expandUdif(const ByteSource& file, const UdifImage& image,
                                           int descriptor, unsigned threads,
                                           const ExpansionStart& start) {
    const auto workers = std::clamp<std::size_t>(image.chunks.size(), 1, std::max(threads, 1U));
    Expansion expansion(file, image, descriptor, workers, start);
    if (expansion.prepare()) {
        runOn(workers, expansion);
    }
    return expansion.failure();
}

} // namespace platform::hdiutil
