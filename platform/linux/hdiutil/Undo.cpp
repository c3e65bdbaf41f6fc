// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Undo.h"

#include "platform/linux/hdiutil/MountAgain.h"
#include "platform/linux/hdiutil/Mounting.h"
#include "platform/linux/hdiutil/PartialDisk.h"
#include "platform/linux/hdiutil/SpareMount.h"
#include "platform/linux/hdiutil/WorkFolders.h"

#include <cerrno>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace platform::hdiutil {
namespace {

/// A volume that is unmounted for as long as it is not known whether all of them can be.
struct TakenVolume {
    std::size_t number; ///< among those of the record
    std::optional<SpareMount> spare;
};

// Does nothing when it is still there, being the one that was refused.
void putBack(AttachRecord& record, const TakenVolume& taken) {
    const MountedVolume& volume = record.volumes.at(taken.number);
    if (mayBeMountPoint(volume.mountPoint)) {
        return;
    }
    const bool isOurFolder = volume.method != MountMethod::service;
    if (isOurFolder && !WorkFolders::makeMountPoint(volume.mountPoint) && errno != EEXIST) {
        return;
    }
    if (!taken.spare || !taken.spare->moveTo(volume.mountPoint)) {
        static_cast<void>(mountAgain(record, taken.number));
    }
}

// In the order in which they were mounted first.
void putBackAll(AttachRecord record, std::vector<TakenVolume>& taken,
                const AttachRecords& records) {
    const AttachRecord before = record;
    for (; !taken.empty(); taken.pop_back()) {
        putBack(record, taken.back());
    }
    if (record != before) {
        static_cast<void>(records.store(record));
    }
}

// False, with errno set, when the system refuses to unmount it.
bool take(const AttachRecord& record, std::size_t number, std::vector<TakenVolume>& taken) {
    const MountedVolume& volume = record.volumes.at(number);
    // What somebody else has unmounted is not brought back. The disk service takes the device away
    // as well, and wants to know what is mounted from it.
    if (isThere(volume)) {
        taken.push_back({number, volume.method == MountMethod::service
                                     ? std::nullopt
                                     : SpareMount::of(volume.mountPoint)});
    }
    return unmountVolume(volume);
}

// Copies go last: their removal cannot be taken back, and none is refused for being in use.
bool isMount(const MountedVolume& volume) {
    return volume.method != MountMethod::copy;
}

} // namespace

bool undo(const AttachRecord& record, const AttachRecords& records) {
    bool isUndone = true;
    int error = 0;
    for (std::size_t left = record.volumes.size(); left > 0; --left) {
        if (!unmountVolume(record.volumes[left - 1])) {
            error = errno;
            isUndone = false;
        }
    }
    // A mount may still need the disk.
    if (isUndone && !record.expandedDisk.empty() && !removeDisk(record.expandedDisk)) {
        error = errno;
        isUndone = false;
    }
    if (isUndone) {
        records.remove(record);
    }
    errno = error;
    return isUndone;
}

bool undoWholly(const AttachRecord& record, const AttachRecords& records) {
    std::vector<TakenVolume> taken;
    for (std::size_t left = record.volumes.size(); left > 0; --left) {
        if (isMount(record.volumes[left - 1]) && !take(record, left - 1, taken)) {
            const int reason = errno;
            putBackAll(record, taken, records);
            errno = reason;
            return false;
        }
    }
    // The disk is not free before its file systems are.
    taken.clear();
    return undo(record, records);
}

} // namespace platform::hdiutil
