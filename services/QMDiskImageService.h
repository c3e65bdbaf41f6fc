// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

/// What the system does with disk images.
class QMDiskImageService {
public:
    /// Whether the name at the end of `path` is that of a disk image which can be mounted. Told by
    /// the extension alone; the file system is not touched. False for an empty path. Any thread.
    [[nodiscard]] static bool isMountableDiskImage(std::string_view path);
};
