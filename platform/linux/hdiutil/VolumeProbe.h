// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

#include <optional>
#include <string>

namespace platform::hdiutil {

/// What a disk or a partition holds, as libblkid tells it.
struct Volume {
    /// libblkid's word: "ext4", "vfat", "hfsplus", "iso9660"; also "swap", "crypto_LUKS" and
    /// "linux_raid_member" for what is no file system itself, see `isFileSystem`.
    std::string type;
    std::string label;        ///< valid UTF-8 without blanks at its end; empty when it has none
    std::string uuid;         ///< in the form that is usual for the type; empty when it has none
    bool isFileSystem = true; ///< false for what only carries another volume, or none
};

/// Looks for the volume that begins at the first byte. nullopt when there is none that is known,
/// when its checksum is wrong, or when the bytes fit two that exclude each other. Reads some 2 MiB
/// at the beginning, 128 KiB at the end, and a little where file systems keep their names; what
/// cannot be read counts as zeros. Any thread.
[[nodiscard]] std::optional<Volume> probeVolume(const ByteSource& bytes);

/// What macOS calls the kind of volume ("msdos", "cd9660", "hfs"); the type itself where macOS has
/// no word for it.
[[nodiscard]] std::string volumeKind(const Volume& volume);

} // namespace platform::hdiutil
