// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/av/AvFile.h"

#include "platform/linux/PositionedRead.h"

#include <utility>

#include <sys/stat.h>

namespace platform::av {

std::optional<AvFile> AvFile::of(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) {
        return std::nullopt;
    }
    return AvFile(descriptor, static_cast<std::uint64_t>(status.st_size));
}

std::size_t AvFile::readSome(std::uint64_t offset, std::span<std::byte> buffer) const {
    return readAt(m_descriptor, offset, buffer);
}

std::optional<Data> AvFile::bytes(std::uint64_t offset, std::uint64_t length,
                                  std::uint64_t maximum) const {
    if (length > maximum || offset > m_size || length > m_size - offset) {
        return std::nullopt;
    }
    Data bytes(static_cast<std::size_t>(length));
    return readSome(offset, bytes) == bytes.size() ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace platform::av
