// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// What the file system keeps of an item besides its contents.
struct FileStatus {
    bool isDirectory = false;
    bool isSymbolicLink = false;
    std::uint32_t mode = 0; ///< permission bits, set-id and sticky bits: mode AND 07777
    std::uint32_t ownerID = 0;
    std::uint32_t groupID = 0;
    std::uint64_t blocks = 0; ///< allocated blocks of 512 bytes
};

/// The status of the item at `path`; with `followLink`, of what a symbolic link leads to. Nothing
/// is opened, so it never blocks on a FIFO. nullopt when there is no such item. Any thread.
[[nodiscard]] std::optional<FileStatus> statusOfItem(const std::string& path, bool followLink);

/// The names of a user and of a group by number; nullopt for numbers without an account. Answers
/// may be up to a minute old. Any thread.
[[nodiscard]] std::optional<std::string> userName(std::uint32_t userID);
[[nodiscard]] std::optional<std::string> groupName(std::uint32_t groupID);

} // namespace platform
