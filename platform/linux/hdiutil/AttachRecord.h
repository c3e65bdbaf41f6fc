// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PropertyList.h"
#include "platform/linux/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform::hdiutil {

/// How a volume came to be where it is: by this tool's own mount, by a FUSE program, as a copy of
/// its files, or by the disk service of the system.
enum class MountMethod { kernel, fuse, copy, service };

/// A loop device that the disk service has made, or was asked for.
struct ServiceDevice {
    std::string path; ///< "/dev/loop7"; empty as long as it is not known
    std::string file; ///< what it shows
    std::uint64_t offset = 0;
    /// The system's number for this use of the device, which no other gets; 0 where it has none.
    std::uint64_t sequence = 0;

    friend bool operator==(const ServiceDevice&, const ServiceDevice&) = default;
};

/// A folder that shows a volume.
struct MountedVolume {
    std::string mountPoint; ///< empty as long as the disk service has not told it
    MountMethod method = MountMethod::kernel;
    ServiceDevice device = {}; ///< for the method `service`

    friend bool operator==(const MountedVolume&, const MountedVolume&) = default;
};

/// What was made to attach one image, kept in a file until all of it is undone. It is written
/// before each thing is made, so that whoever comes after a crash knows what there may be.
struct AttachRecord {
    std::string image;        ///< the image's path, without links
    std::string expandedDisk; ///< a file that holds the expanded disk; empty for none
    std::vector<MountedVolume> volumes;
    PropertyList::Array entities; ///< what was printed about the volumes
    bool isComplete = false;      ///< attaching came to its end

    friend bool operator==(const AttachRecord&, const AttachRecord&) = default;

    /// The record as it is kept. Paths are data in it, since they need not be UTF-8.
    [[nodiscard]] PropertyList asPropertyList() const;
    /// nullopt for anything but what `asPropertyList` makes.
    [[nodiscard]] static std::optional<AttachRecord> fromPropertyList(const PropertyList& list);
};

/// The records of a user. While an object lives, no other process has one.
class AttachRecords {
public:
    /// Waits for its turn. nullopt, with errno set, when there is no folder for records.
    [[nodiscard]] static std::optional<AttachRecords> open();

    /// All of them; damaged files are left out.
    [[nodiscard]] std::vector<AttachRecord> all() const;

    /// Writes the record of an image, wholly or not at all, in place of an older one. False, with
    /// errno set, when the system refuses.
    [[nodiscard]] bool store(const AttachRecord& record) const;

    /// Removes the record of that image.
    void remove(const AttachRecord& record) const;

private:
    AttachRecords(std::string folder, Descriptor lock)
        : m_folder(std::move(folder))
        , m_lock(std::move(lock)) {}

    [[nodiscard]] std::string pathOf(const AttachRecord& record) const;

    std::string m_folder;
    Descriptor m_lock;
};

} // namespace platform::hdiutil
