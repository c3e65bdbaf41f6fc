// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Where the tool keeps what it makes. All folders are the user's own, and others may not write to
/// them. One thread at a time.
namespace platform::hdiutil::WorkFolders {

/// For records of what is attached: below the user's runtime folder (XDG_RUNTIME_DIR, for root
/// without one /run). It is made where it is missing; nullopt, with errno set, when that fails.
[[nodiscard]] std::optional<std::string> records();

/// For disks that had to be expanded: below the user's cache folder. Made like that one.
[[nodiscard]] std::optional<std::string> expandedDisks();

/// A path for the folder that a volume is to be mounted at, named after its label, with a number
/// behind it where that is taken. Nothing is there yet. nullopt, with errno set, when there is no
/// place for such folders.
[[nodiscard]] std::optional<std::string> freeMountPoint(std::string_view label);

/// Makes that folder. False, with errno set, when that fails.
[[nodiscard]] bool makeMountPoint(const std::string& path);

/// The name of a folder for a volume of that label: never empty, one component, no control
/// characters.
[[nodiscard]] std::string folderNameForLabel(std::string_view label);

} // namespace platform::hdiutil::WorkFolders
