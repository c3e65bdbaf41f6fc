// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"
#include "platform/linux/hdiutil/ImageState.h"
#include "platform/linux/hdiutil/PartitionMap.h"
#include "platform/linux/hdiutil/UdifSource.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace platform::hdiutil {

/// A disk image: what form it has, and the disk in it.
struct DiskImage {
    enum class Kind { udif, encrypted, sparseImage, sparseBundle, optical, raw };

    std::string path; ///< as it was given
    Kind kind = Kind::raw;
    /// The disk of a UDIF image; null for the others.
    std::shared_ptr<const UdifSource> udif;
    /// The file; null for a sparse bundle, which is a folder.
    std::shared_ptr<const FileSource> file;
    /// Of a moment before the first byte was read; nullopt when that cannot be told.
    std::optional<ImageState> state;
    /// The bytes of the disk; null when they are encrypted.
    std::shared_ptr<const ByteSource> disk;
    /// The partitions of the disk; of no scheme when it has none.
    PartitionMap map;
    /// Whether the disk as a whole is an optical disc; a map then is for machines that take it for
    /// a hard disk.
    bool isDisc = false;
    /// The bytes that the image takes up.
    std::uint64_t storedBytes = 0;

    /// Bytes of the disk, as far as they are known: for encrypted ones what the image takes up.
    [[nodiscard]] std::uint64_t totalBytes() const { return disk ? disk->size() : storedBytes; }

    /// Whether nobody seems to have written to the image since it was opened.
    [[nodiscard]] bool isUnchanged() const {
        return file ? file->isUnchanged() : !state || bundleStateAt(path) == state;
    }
};

/// Opens the image at `path`, or answers why it is none, in one line for people. A file of bytes
/// without any form counts when there are partitions or a file system in it.
[[nodiscard]] std::variant<DiskImage, std::string> openDiskImage(const std::string& path);

/// The four letters for the form of an image ("UDZO"), its description, and the class that stands
/// for it, as macOS names them.
struct FormatNames {
    std::string_view format;
    std::string_view description;
    std::string_view className;
};
/// Those of the image. They live as long as the program.
[[nodiscard]] FormatNames formatNamesOf(const DiskImage& image);

} // namespace platform::hdiutil
