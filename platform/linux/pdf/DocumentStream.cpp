// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/DocumentStream.h"

#include "platform/linux/PositionedRead.h"

#include <utility>

namespace platform::pdf {

DocumentStream::DocumentStream(int descriptor, Goffset size)
    : DocumentStream(descriptor, 0, false, size, Object(objNull)) {}

DocumentStream::DocumentStream(int descriptor, Goffset from, bool isLimited, Goffset size,
                               Object&& head)
    : BaseSeekInputStream(from, isLimited, size, std::move(head))
    , m_descriptor(descriptor) {}

BaseStream* DocumentStream::copy() {
    return new DocumentStream(m_descriptor, start, limited, length, dict.copy());
}

Stream* DocumentStream::makeSubStream(Goffset from, bool isLimited, Goffset size, Object&& head) {
    return new DocumentStream(m_descriptor, from, isLimited, size, std::move(head));
}

Goffset DocumentStream::read(char* buffer, Goffset size) {
    if (m_position < 0 || size <= 0) {
        return 0; // offsets come from the file
    }
    const std::size_t count =
        readAt(m_descriptor, static_cast<std::uint64_t>(m_position),
               std::as_writable_bytes(std::span(buffer, static_cast<std::size_t>(size))));
    m_position += static_cast<Goffset>(count);
    return static_cast<Goffset>(count);
}

} // namespace platform::pdf
