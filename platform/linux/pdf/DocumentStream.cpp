// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/DocumentStream.h"

#include "platform/linux/PositionedRead.h"

#include <algorithm>
#include <utility>

namespace platform::pdf {

DocumentStream::DocumentStream(int descriptor, Goffset size, std::string_view more)
    : BaseSeekInputStream(0, false, size + static_cast<Goffset>(more.size()), Object(objNull))
    , m_descriptor(descriptor)
    , m_fileSize(size)
    , m_more(more) {}

DocumentStream::DocumentStream(const DocumentStream& whole, Goffset from, bool isLimited,
                               Goffset size, Object&& head)
    : BaseSeekInputStream(from, isLimited, size, std::move(head))
    , m_descriptor(whole.m_descriptor)
    , m_fileSize(whole.m_fileSize)
    , m_more(whole.m_more) {}

BaseStream* DocumentStream::copy() {
    return new DocumentStream(*this, start, limited, length, dict.copy());
}

Stream* DocumentStream::makeSubStream(Goffset from, bool isLimited, Goffset size, Object&& head) {
    return new DocumentStream(*this, from, isLimited, size, std::move(head));
}

Goffset DocumentStream::read(char* buffer, Goffset size) {
    if (m_position < 0 || size <= 0) {
        return 0; // offsets come from the file
    }
    const std::span bytes(buffer, static_cast<std::size_t>(size));
    const std::size_t count = m_position < m_fileSize ? readFile(bytes) : readMore(bytes);
    m_position += static_cast<Goffset>(count);
    return static_cast<Goffset>(count);
}

// Up to the end of the file; what comes then is asked for again.
std::size_t DocumentStream::readFile(std::span<char> buffer) const {
    const auto rest = static_cast<std::size_t>(m_fileSize - m_position);
    return readAt(m_descriptor, static_cast<std::uint64_t>(m_position),
                  std::as_writable_bytes(buffer.first(std::min(buffer.size(), rest))));
}

std::size_t DocumentStream::readMore(std::span<char> buffer) const {
    const auto skipped = static_cast<std::size_t>(m_position - m_fileSize);
    return skipped < m_more.size() ? m_more.substr(skipped).copy(buffer.data(), buffer.size()) : 0;
}

} // namespace platform::pdf
