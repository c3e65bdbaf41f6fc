// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/OpenedFile.h"

#include "platform/linux/PositionedRead.h"

#include <utility>

#include <sys/stat.h>

namespace platform {

std::optional<OpenedFile> OpenedFile::of(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) {
        return std::nullopt;
    }
    return OpenedFile(descriptor, static_cast<std::uint64_t>(status.st_size));
}

std::size_t OpenedFile::readSome(std::uint64_t offset, std::span<std::byte> buffer) const {
    return readAt(m_descriptor, offset, buffer);
}

bool OpenedFile::read(std::uint64_t offset, std::span<std::byte> buffer) const {
    return readSome(offset, buffer) == buffer.size();
}

std::optional<Data> OpenedFile::bytes(std::uint64_t offset, std::uint64_t length,
                                      std::uint64_t maximum) const {
    if (length > maximum || offset > m_size || length > m_size - offset) {
        return std::nullopt;
    }
    Data bytes(static_cast<std::size_t>(length));
    return read(offset, bytes) ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace platform
