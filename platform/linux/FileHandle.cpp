// SPDX-License-Identifier: Apache-2.0
#include "platform/FileHandle.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

namespace platform {

std::optional<FileHandle> FileHandle::forReadingAtPath(const std::string& path) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        return std::nullopt;
    }
    FileHandle handle(descriptor);
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode)) {
        return std::nullopt;
    }
    return handle;
}

FileHandle FileHandle::fromDescriptor(int descriptor) {
    return FileHandle(descriptor);
}

FileHandle::FileHandle(FileHandle&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

FileHandle::~FileHandle() {
    close();
}

// NOLINTNEXTLINE(readability-make-member-function-const): it moves the file's position
FileHandle::ReadResult FileHandle::read(std::span<std::byte> buffer) {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const std::size_t wanted =
            std::min<std::size_t>(buffer.size() - filled, std::numeric_limits<ssize_t>::max());
        const ssize_t count = ::read(m_descriptor, buffer.data() + filled, wanted);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 && filled == 0) {
            return ReadError{std::system_category().message(errno)};
        }
        if (count <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    return filled;
}

void FileHandle::close() {
    if (m_descriptor >= 0) {
        // Linux has released the descriptor even when close reports an interruption.
        ::close(std::exchange(m_descriptor, -1));
    }
}

} // namespace platform
