// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/FileIdentity.h"

#include <algorithm>

#include <sys/stat.h>

namespace platform {
namespace {

std::int64_t nanoseconds(const timespec& time) {
    // Beyond what nanoseconds can count, all times are the same.
    constexpr std::int64_t furthest = 9'000'000'000;
    constexpr std::int64_t perSecond = 1'000'000'000;
    return std::clamp<std::int64_t>(time.tv_sec, -furthest, furthest) * perSecond + time.tv_nsec;
}

} // namespace

std::optional<FileIdentity> identityOf(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return FileIdentity{.device = status.st_dev,
                        .inode = status.st_ino,
                        .size = status.st_size,
                        .modified = nanoseconds(status.st_mtim),
                        .changed = nanoseconds(status.st_ctim)};
}

std::optional<FileIdentity> identityOfFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? identityOf(status) : std::nullopt;
}

} // namespace platform
