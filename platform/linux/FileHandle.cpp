// SPDX-License-Identifier: Apache-2.0
#include "platform/FileHandle.h"

#include "platform/linux/RegularFile.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

namespace platform {
namespace {

int openForReading(const std::string& path, int flags) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | flags);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

std::optional<struct stat> statusOf(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 ? std::optional(status) : std::nullopt;
}

bool isRegularFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

// Opening a pipe or a device is felt by others, so it is not tried; what was opened may be another
// file by then.
Descriptor openRegularFile(const std::string& path) {
    if (!isRegularFile(path)) {
        return {};
    }
    Descriptor file(openForReading(path, O_NONBLOCK));
    const auto status = statusOf(file.number());
    return status && S_ISREG(status->st_mode) ? std::move(file) : Descriptor();
}

std::optional<FileHandle> FileHandle::forReadingAtPath(const std::string& path) {
    FileHandle handle(openForReading(path, 0));
    const auto status = statusOf(handle.m_descriptor);
    return status && !S_ISDIR(status->st_mode) ? std::optional(std::move(handle)) : std::nullopt;
}

std::optional<FileHandle> FileHandle::forReadingRegularFileAtPath(const std::string& path) {
    FileHandle handle(openRegularFile(path).release());
    return handle.m_descriptor >= 0 ? std::optional(std::move(handle)) : std::nullopt;
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

std::uint64_t FileHandle::size() const {
    const auto status = statusOf(m_descriptor);
    return status && status->st_size > 0 ? static_cast<std::uint64_t>(status->st_size) : 0;
}

void FileHandle::close() {
    if (m_descriptor >= 0) {
        // Linux has released the descriptor even when close reports an interruption.
        ::close(std::exchange(m_descriptor, -1));
    }
}

} // namespace platform
