// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// What the file system keeps of an item besides its contents.
struct FileStatus {
    bool isDirectory = false;    ///< also of what a link leads to, where it was followed
    bool isSymbolicLink = false; ///< never where the link was followed
    std::uint32_t mode = 0;      ///< permission bits, set-id and sticky bits: mode AND 07777
    std::uint32_t ownerID = 0;   ///< number of the owning user
    std::uint32_t groupID = 0;   ///< number of the owning group
    std::uint64_t blocks = 0;    ///< allocated blocks of 512 bytes
};

/// The status of the item at `path`; with `followLink`, of what a symbolic link leads to. Nothing
/// is opened, so it never blocks on a FIFO. nullopt when there is no such item. Any thread.
[[nodiscard]] std::optional<FileStatus> statusOfItem(const std::string& path, bool followLink);

/// The name of a user by number; nullopt for a number without an account. Answers may be up to a
/// minute old. Any thread.
[[nodiscard]] std::optional<std::string> userName(std::uint32_t userID);
/// The same for a group.
[[nodiscard]] std::optional<std::string> groupName(std::uint32_t groupID);

} // namespace platform
