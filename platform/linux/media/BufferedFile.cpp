// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/BufferedFile.h"

#include <algorithm>

namespace platform::media {

BufferedFile::BufferedFile(const OpenedFile& file, std::size_t bufferSize)
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

} // namespace platform::media
