// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct stat;

namespace platform {

/// Tells one state of one file from every other, as far as the file system can: a change to as
/// many bytes within one tick of its clock goes unnoticed.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;     ///< bytes
    std::int64_t modified = 0; ///< nanoseconds since 1970
    std::int64_t changed = 0;  ///< the same, of the last change of anything about the file
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// The identity of the regular file that has this status; nullopt for anything else. Any thread.
[[nodiscard]] std::optional<FileIdentity> identityOf(const struct stat& status);

/// The identity of the regular file at `path`, links followed; nullopt for anything else. Nothing
/// is opened, so it never blocks on a FIFO. Any thread.
[[nodiscard]] std::optional<FileIdentity> identityOfFile(const std::string& path);

} // namespace platform
