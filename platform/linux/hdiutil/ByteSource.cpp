// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/ByteSource.h"

#include "platform/linux/PositionedRead.h"
#include "platform/linux/hdiutil/BandedRead.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

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
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    struct stat status {};
    const auto size = descriptor < 0 ? std::nullopt : sizeOf(descriptor, status);
    if (!size) {
        if (reason != nullptr) {
            *reason = std::generic_category().message(errno);
        }
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        return nullptr;
    }
    return std::shared_ptr<const FileSource>(new FileSource(descriptor, *size, identityOf(status)));
}

FileSource::~FileSource() {
    ::close(m_descriptor);
}

bool FileSource::read(std::uint64_t offset, std::span<std::byte> buffer) const {
    return isInside(offset, buffer.size(), m_size) &&
           readAt(m_descriptor, offset, buffer) == buffer.size();
}

bool FileSource::isUnchanged() const {
    struct stat status {};
    if (::fstat(m_descriptor, &status) != 0) {
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
