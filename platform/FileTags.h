// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/SystemError.h"

#include <optional>
#include <string>
#include <vector>

/// Tags on files, as the desktops of this system and files from Macs carry them. A symbolic link
/// has tags of its own, as far as the system lets links carry any. docs/tags.md tells what is
/// stored where. Any thread; of two that write the same file at once, one wins.
namespace platform::FileTags {

/// The names of the tags on the item at `path`, in stored order and without colours. nullopt when
/// the item carries none or they cannot be read.
[[nodiscard]] std::optional<std::vector<std::string>> read(const std::string& path);

/// What to do with a list on the file that is damaged.
enum class Damaged {
    replace, ///< the new list stands for whatever was there
    keep,    ///< fail: the new list was made from an old one that nobody could read
};

/// Stores `names` as the tags of the item at `path`, in place of those that it has; none at all
/// removes every trace. Colours that known names have are kept. Answers why when it failed; then
/// the item has the tags that it had before. A process that dies in the middle leaves no name on
/// the item that neither list holds.
[[nodiscard]] std::optional<SystemError>
write(const std::string& path, const std::vector<std::string>& names, Damaged damaged);

} // namespace platform::FileTags
