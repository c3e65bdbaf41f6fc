// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/UdifExpander.h"

#include "platform/Format.h"
#include "platform/linux/hdiutil/UdifCodec.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include <unistd.h>

namespace platform::hdiutil {
namespace {

// Holes are made of whole blocks of the file system, which rarely has others than these.
constexpr std::uint64_t blockSize = 4096;
constexpr std::uint64_t pieceSize = std::uint64_t{1} << 20;

using Bytes = std::span<const std::byte>;

bool isZero(Bytes bytes) {
    return bytes.front() == std::byte{0} &&
           std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
}

// Writes all of the bytes; answers 0 or the number of the error.
int writeAt(int descriptor, std::uint64_t offset, Bytes bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            ::pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        const auto written = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        bytes = bytes.subspan(written);
        offset += written;
    }
    return 0;
}

// How many of the bytes, which belong to `offset` of the file, make up whole blocks of zeros, or,
// with `zero` false, blocks of which none is all zeros.
std::size_t runLength(std::uint64_t offset, Bytes bytes, bool zero) {
    std::size_t length = 0;
    while (length < bytes.size()) {
        const auto toBoundary = static_cast<std::size_t>(blockSize - (offset + length) % blockSize);
        const Bytes block = bytes.subspan(length, std::min(toBoundary, bytes.size() - length));
        if (isZero(block) != zero) {
            break;
        }
        length += block.size();
    }
    return length;
}

// The same as writeAt, but leaves blocks of zeros out.
int writeSparsely(int descriptor, std::uint64_t offset, Bytes bytes) {
    while (!bytes.empty()) {
        const std::size_t zeros = runLength(offset, bytes, true);
        const std::size_t length = runLength(offset + zeros, bytes.subspan(zeros), false);
        if (const int error = writeAt(descriptor, offset + zeros, bytes.subspan(zeros, length))) {
            return error;
        }
        bytes = bytes.subspan(zeros + length);
        offset += zeros + length;
    }
    return 0;
}

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
        const auto size = static_cast<off_t>(m_image.sectorCount * udifSectorSize);
        // What the holes would otherwise let through goes first.
        const auto kept = static_cast<off_t>(m_written);
        if (::ftruncate(m_descriptor, kept) != 0 || ::ftruncate(m_descriptor, size) != 0) {
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

    void write(std::uint64_t offset, Bytes bytes) {
        if (const int error = writeSparsely(m_descriptor, offset, bytes)) {
            failForSystem(error);
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
