// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/FileBytes.h"

#include "platform/linux/PositionedRead.h"
#include "platform/linux/pdf/Values.h"

#include <algorithm>

namespace platform::pdf {

std::string_view FileBytes::at(std::uint64_t offset, std::size_t size) {
    if (offset >= m_size) {
        return {};
    }
    size = static_cast<std::size_t>(std::min<std::uint64_t>(size, m_size - offset));
    if (offset < m_start || offset - m_start > m_bytes.size() ||
        m_bytes.size() - (offset - m_start) < size) {
        readFrom(offset, size);
    }
    return std::string_view(m_bytes).substr(static_cast<std::size_t>(offset - m_start), size);
}

void FileBytes::readFrom(std::uint64_t offset, std::size_t size) {
    constexpr std::uint64_t block = 4096; // neighbours are often asked for next
    size =
        static_cast<std::size_t>(std::min(std::max<std::uint64_t>(size, block), m_size - offset));
    m_bytes.resize(size);
    m_bytes.resize(readAt(m_descriptor, offset, std::as_writable_bytes(std::span(m_bytes))));
    m_start = offset;
}

std::optional<std::string_view> FileBytes::takeValue(std::uint64_t& offset) {
    constexpr std::size_t first = 1024;
    constexpr std::size_t most = std::size_t{4} << 20U;
    for (std::size_t size = first; size <= most; size *= 8) {
        const std::string_view bytes = at(offset, size);
        std::string_view rest = bytes;
        if (const auto value = pdf::takeValue(rest)) {
            offset += bytes.size() - rest.size();
            return value;
        }
        if (bytes.size() < size) {
            break;
        }
    }
    return std::nullopt;
}

} // namespace platform::pdf
