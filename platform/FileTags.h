// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/SystemError.h"

#include <functional>
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

/// Stores `names` as the tags of the item at `path`, in place of those that it has; none at all
/// removes every trace. Colours that known names have are kept, and a damaged list is replaced.
/// Answers why when it failed, be it that the old tags cannot be read; then the item has the tags
/// that it had before. A process that dies in the middle leaves no name on the item that neither
/// list holds.
[[nodiscard]] std::optional<SystemError> write(const std::string& path,
                                               const std::vector<std::string>& names);

/// Changes the names that it is given, and answers whether there is anything to store.
using Edit = std::function<bool(std::vector<std::string>& names)>;

/// Stores what `edit` makes of the names on the item at `path`, like write. What the caller may not
/// read, or is not there, counts as no names. Fails where something is to be stored over a list
/// that could not be read or is damaged, and where the system fails to read.
[[nodiscard]] std::optional<SystemError> change(const std::string& path, const Edit& edit);

} // namespace platform::FileTags
