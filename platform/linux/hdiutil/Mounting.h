// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/AttachRecord.h"
#include "platform/linux/hdiutil/VolumeProbe.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace platform::hdiutil {

/// A file system in a file.
struct VolumeInFile {
    std::string file; ///< holds the disk as it is
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    bool isWholeFile = false;
    bool isReadOnly = false;
    Volume volume;
};

/// What mounting made.
struct Mounted {
    MountMethod method = MountMethod::kernel;
    std::string device; ///< the block device, or the file where there is none
};

/// Shows the volume at `mountPoint`, an empty folder, in the first way that works: the kernel's
/// own driver over a loop device, a FUSE program, a copy. nullopt when none does; the folder is
/// empty then.
[[nodiscard]] std::optional<Mounted> mountVolume(const VolumeInFile& volume,
                                                 const std::string& mountPoint);

/// Lets the disk service of the system mount a volume of the method `service`. What `target` tells
/// of the device and the mount point becomes true on the way, and `note` is called for the device:
/// when it answers false, nothing is mounted. Answers whether the volume is mounted; if not, what
/// was made is for `unmountVolume`.
[[nodiscard]] bool mountByService(const VolumeInFile& volume, MountedVolume& target,
                                  const std::function<bool()>& note);

/// Whether something is mounted at `path`, as far as the system tells.
[[nodiscard]] bool isMountPoint(const std::string& path);
/// The same, but true also where the system does not tell: what is to go has to be unmounted then,
/// and nothing may be mounted over it.
[[nodiscard]] bool mayBeMountPoint(const std::string& path);

/// Whether a volume is still where it was mounted.
[[nodiscard]] bool isThere(const MountedVolume& volume);

/// Whether a volume that is mounted at `path` is in use. False where nothing is mounted.
[[nodiscard]] bool isBusy(const MountedVolume& volume);

/// Undoes `mountVolume` and removes the folder. False, with errno set, when the system refuses;
/// true also when there is nothing to undo.
[[nodiscard]] bool unmountVolume(const MountedVolume& volume);

} // namespace platform::hdiutil
