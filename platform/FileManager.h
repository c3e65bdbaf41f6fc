// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <cstddef>
#include <optional>
#include <string>

/// Questions to the file system. Paths are bytes and are used exactly as given. Any thread.
namespace platform::FileManager {

/// Whether a file, folder or other item exists at `path`. Symbolic links are followed, so a
/// dangling link does not exist. False for an empty path and for one that cannot be reached.
[[nodiscard]] bool fileExistsAtPath(const std::string& path);

/// The contents of the regular file at `path`, links followed; nullopt for anything else, for a
/// file that cannot be read, and for one of more than `maximumSize` bytes. Never blocks on a FIFO.
[[nodiscard]] std::optional<Data> contentsAtPath(const std::string& path, std::size_t maximumSize);

/// The process's current directory; empty when it was removed or cannot be read.
[[nodiscard]] std::string currentDirectoryPath();

/// The home directory of the user who runs the process: the HOME variable, else the account's.
[[nodiscard]] std::optional<std::string> homeDirectory();

/// The home directory of the named account; nullopt when there is no such account.
[[nodiscard]] std::optional<std::string> homeDirectoryForUser(const std::string& user);

/// The absolute path of `path` without symbolic links, "." and ".."; nullopt unless all of it
/// exists.
[[nodiscard]] std::optional<std::string> resolvingSymlinks(const std::string& path);

} // namespace platform::FileManager
