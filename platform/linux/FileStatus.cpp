// SPDX-License-Identifier: Apache-2.0
#include "platform/FileStatus.h"

#include <sys/stat.h>

namespace platform {

std::optional<FileStatus> statusOfItem(const std::string& path, bool followLink) {
    struct stat status {};
    const int result = followLink ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
    if (result != 0) {
        return std::nullopt;
    }
    return FileStatus{
        .isDirectory = S_ISDIR(status.st_mode),
        .isSymbolicLink = S_ISLNK(status.st_mode),
        .mode = status.st_mode & 07777U,
        .ownerID = status.st_uid,
        .groupID = status.st_gid,
        .blocks = static_cast<std::uint64_t>(status.st_blocks),
    };
}

} // namespace platform
