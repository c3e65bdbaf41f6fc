// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/Attach.h"
#include "platform/linux/hdiutil/DiskImage.h"

#include <optional>
#include <string>

namespace platform::hdiutil {

/// Whether this process may write to the file at `path`, and its file system lets it.
[[nodiscard]] bool isWritable(const std::string& path);

/// A path for a file that holds an expanded disk, which does not exist yet. nullopt, with errno
/// set, when there is no folder for such files.
[[nodiscard]] std::optional<std::string> newDiskFilePath();

/// Writes the image's disk to a new file at `path`, sparsely, never more than the disk's size. On
/// failure the file may be there in part.
[[nodiscard]] std::optional<Failure> expandDisk(const DiskImage& image, const std::string& path);

} // namespace platform::hdiutil
