// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

/// Tags on files, as the desktops of this system and files from Macs carry them.
namespace platform::FileTags {

/// The names of the tags on the item at `path`, a symbolic link's own, in stored order and without
/// colours. nullopt when the item carries none or they cannot be read. Any thread.
[[nodiscard]] std::optional<std::vector<std::string>> read(const std::string& path);

} // namespace platform::FileTags
