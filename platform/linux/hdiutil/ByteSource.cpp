// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ByteSource.h"

#include "platform/linux/PositionedRead.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

namespace platform::hdiutil {
namespace {

// The size of a file or of a block device, or nullopt for anything else.
std::optional<std::uint64_t> sizeOf(int descriptor, struct stat& status) {
    if (::fstat(descriptor, &status) != 0) {
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode)) {
        errno = EINVAL;
        return std::nullopt;
    }
    const off_t end = ::lseek(descriptor, 0, SEEK_END);
    return end < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(end));
}

} // namespace

std::shared_ptr<const FileSource> FileSource::open(const std::string& path, std::string* reason) {
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    const auto size = file.number() < 0 ? std::nullopt : sizeOf(file.number(), status);
    if (!size) {
        if (reason != nullptr) {
            *reason = std::generic_category().message(errno);
        }
        return nullptr;
    }
    return std::shared_ptr<const FileSource>(
        new FileSource(std::move(file), *size, identityOf(status)));
}

bool FileSource::read(std::uint64_t offset, std::span<std::byte> buffer) const {
    return isInside(offset, buffer.size(), m_size) &&
           readAt(m_file.number(), offset, buffer) == buffer.size();
}

// A file system that keeps no holes, or does not tell of them, has none.
std::uint64_t FileSource::nextData(std::uint64_t offset) const {
    if (offset >= m_size) {
        return m_size;
    }
    const off_t next = ::lseek(m_file.number(), static_cast<off_t>(offset), SEEK_DATA);
    if (next < 0) {
        return errno == ENXIO ? m_size : offset;
    }
    return std::min(static_cast<std::uint64_t>(next), m_size);
}

bool FileSource::isUnchanged() const {
    struct stat status {};
    if (::fstat(m_file.number(), &status) != 0) {
        return false;
    }
    const auto now = identityOf(status);
    return !m_state || (now && now->size == m_state->size && now->modified == m_state->modified);
}

PartSource::PartSource(std::shared_ptr<const ByteSource> whole, std::uint64_t offset,
                       std::uint64_t length)
    : m_whole(std::move(whole))
    , m_offset(std::min(offset, m_whole->size()))
    , m_length(std::min(length, m_whole->size() - m_offset)) {}

bool PartSource::read(std::uint64_t offset, std::span<std::byte> buffer) const {
    return isInside(offset, buffer.size(), m_length) && m_whole->read(m_offset + offset, buffer);
}

} // namespace platform::hdiutil
