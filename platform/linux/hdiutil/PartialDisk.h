// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"
#include "platform/linux/hdiutil/DiskImage.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform::hdiutil {

/// A file that an image's disk is being expanded into, and beside it a note that says how far that
/// has come. While an object lives, no other process touches either. The note stays until
/// `release`, so whatever ends the process leaves what the next one can go on with.
///
/// The note follows what was written and is not forced to the disk: it is good for as long as the
/// system runs, and no longer.
class PartialDisk {
public:
    /// Takes up what is left of an expansion of the same image, when nothing was written to that
    /// since; otherwise starts a new one. nullopt, with errno set, when neither can be done.
    [[nodiscard]] static std::optional<PartialDisk> open(const DiskImage& image);

    /// Where the disk is.
    [[nodiscard]] const std::string& path() const { return m_path; }
    /// Of the disk, for reading and writing; -1 after `finish`.
    [[nodiscard]] int descriptor() const { return m_disk.number(); }
    /// So many bytes from the disk's start on are there.
    [[nodiscard]] std::uint64_t written() const { return m_written; }

    /// That number has become larger. It is noted from time to time.
    void reached(std::uint64_t written);
    /// There is no going on for now. Notes what was written, and gives back the room of the rest.
    void pause();
    /// Whether somebody could take it up after this process.
    [[nodiscard]] bool isOfUse() const { return m_noted > 0; }
    /// All is written. False, with errno set, when the system has not taken all of it.
    [[nodiscard]] bool finish();
    /// The disk is complete, and no longer this object's. For others it now looks like any file.
    void release() const;

private:
    PartialDisk(std::string path, Descriptor note, Descriptor disk)
        : m_path(std::move(path))
        , m_note(std::move(note))
        , m_disk(std::move(disk)) {}

    [[nodiscard]] static std::optional<PartialDisk> takeUp(const std::string& folder,
                                                           const DiskImage& image);
    [[nodiscard]] static std::optional<PartialDisk> start(const std::string& folder,
                                                          const DiskImage& image);
    void note();

    std::string m_path;
    Descriptor m_note;
    Descriptor m_disk;
    std::uint64_t m_written = 0;
    std::uint64_t m_noted = 0;
    bool m_canBeTakenUp = false;
};

/// Whether the disk at `path` has a note, so is not complete.
[[nodiscard]] bool isPartialDisk(const std::string& path);

/// Removes a disk, partial or not. False, with errno set, when it is still there.
bool removeDisk(const std::string& path);

/// How long a partial disk is kept after it last grew.
inline constexpr std::chrono::hours partialDiskLifetime{24};

/// Which partial disks.
enum class PartialDisks {
    useless, ///< of images that are gone, of another run of the system, damaged, or too old
    all
};
/// Removes those that no process is at work on; answers how many.
std::size_t removePartialDisks(PartialDisks which);

/// Removes the disks that were complete when the system was started anew, except for those of
/// `known`: what showed them is gone, and whoever knew of them forgot.
void removeForgottenDisks(const std::vector<std::string>& known);

} // namespace platform::hdiutil
