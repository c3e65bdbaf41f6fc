// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/DiskImage.h"
#include "platform/linux/hdiutil/PartialDisk.h"
#include "platform/linux/hdiutil/UdifExpander.h"

#include <optional>
#include <string>

namespace platform::hdiutil {

/// Whether this process may write to the file at `path`, and its file system lets it.
[[nodiscard]] bool isWritable(const std::string& path);

/// Writes what is missing of the image's disk, sparsely, never more than the disk's size. After a
/// failure of the system it can be called again, and goes on.
[[nodiscard]] std::optional<ExpansionFailure> expandDisk(const DiskImage& image, PartialDisk& disk);

} // namespace platform::hdiutil
