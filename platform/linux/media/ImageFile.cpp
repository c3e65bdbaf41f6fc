// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/ImageFile.h"

#include "platform/linux/PositionedRead.h"

#include <algorithm>
#include <limits>

#include <sys/mman.h>
#include <sys/stat.h>

namespace platform::media {

std::optional<ImageFile> ImageFile::of(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) {
        return std::nullopt;
    }
    return ImageFile(descriptor, static_cast<std::uint64_t>(status.st_size));
}

std::size_t ImageFile::readSome(std::uint64_t offset, std::span<std::byte> buffer) const {
    return readAt(m_descriptor, offset, buffer);
}

bool ImageFile::read(std::uint64_t offset, std::span<std::byte> buffer) const {
    return readSome(offset, buffer) == buffer.size();
}

std::optional<Data> ImageFile::bytes(std::uint64_t offset, std::uint64_t length,
                                     std::uint64_t maximum) const {
    if (length > maximum || offset > m_size || length > m_size - offset) {
        return std::nullopt;
    }
    Data bytes(static_cast<std::size_t>(length));
    return read(offset, bytes) ? std::optional(std::move(bytes)) : std::nullopt;
}

BufferedFile::BufferedFile(const ImageFile& file, std::size_t bufferSize)
    : m_file(file)
    , m_buffer(bufferSize) {}

DataView BufferedFile::buffered() const {
    const bool isInside = m_position >= m_start && m_position - m_start < m_count;
    const auto offset = isInside ? static_cast<std::size_t>(m_position - m_start) : m_count;
    return DataView(m_buffer).first(m_count).subspan(offset);
}

void BufferedFile::fill() {
    m_start = m_position;
    m_count = m_file.readSome(m_start, m_buffer);
}

std::size_t BufferedFile::read(std::span<std::byte> buffer) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        if (buffered().empty()) {
            // What does not fit need not be copied twice.
            if (const auto rest = buffer.subspan(done); rest.size() >= m_buffer.size()) {
                const std::size_t count = m_file.readSome(m_position, rest);
                m_position += count;
                return done + count;
            }
            fill();
        }
        const DataView found = buffered();
        const std::size_t count = std::min(found.size(), buffer.size() - done);
        if (count == 0) {
            break;
        }
        std::copy_n(found.begin(), count, buffer.begin() + static_cast<std::ptrdiff_t>(done));
        done += count;
        m_position += count;
    }
    return done;
}

DataView BufferedFile::next() {
    if (buffered().empty()) {
        fill();
    }
    const DataView found = buffered();
    m_position += found.size();
    return found;
}

MappedFile::MappedFile(const ImageFile& file, std::uint64_t length) {
    length =
        std::min({length, file.size(), std::uint64_t{std::numeric_limits<std::ptrdiff_t>::max()}});
    if (length == 0) {
        return;
    }
    const auto count = static_cast<std::size_t>(length);
    void* const start = ::mmap(nullptr, count, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_NORESERVE,
                               file.descriptor(), 0);
    if (start != MAP_FAILED) {
        m_bytes = {static_cast<std::byte*>(start), count};
    }
}

MappedFile::~MappedFile() {
    if (!m_bytes.empty()) {
        ::munmap(m_bytes.data(), m_bytes.size());
    }
}

} // namespace platform::media
