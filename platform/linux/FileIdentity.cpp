// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/FileIdentity.h"

#include <sys/stat.h>

namespace platform {
namespace {

// Wraps around for times that no clock shows; as a mark of a state it still serves.
std::int64_t nanoseconds(const timespec& time) {
    constexpr std::uint64_t perSecond = 1'000'000'000;
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.tv_sec) * perSecond +
                                     static_cast<std::uint64_t>(time.tv_nsec));
}

} // namespace

std::optional<FileIdentity> identityOfFile(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return FileIdentity{.device = status.st_dev,
                        .inode = status.st_ino,
                        .size = status.st_size,
                        .modified = nanoseconds(status.st_mtim),
                        .changed = nanoseconds(status.st_ctim)};
}

} // namespace platform
