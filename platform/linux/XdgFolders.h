// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

/// The folders of the XDG Base Directory Specification. What its variables hold counts only where
/// it is absolute.
namespace platform::XdgFolders {

/// Where data files are looked for, the most important folder first: the user's own, then those
/// of the system. Any thread.
[[nodiscard]] std::vector<std::string> dataFolders();

/// Where the user's settings are kept: $XDG_CONFIG_HOME, else ".config" in the home directory.
/// nullopt for a user without either. Any thread.
[[nodiscard]] std::optional<std::string> configurationFolder();

} // namespace platform::XdgFolders
