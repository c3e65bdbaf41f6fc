// SPDX-License-Identifier: Apache-2.0
#include "platform/FileManager.h"
#include "platform/Format.h"
#include "platform/PathString.h"
#include "platform/linux/hdiutil/Attach.h"
#include "platform/linux/hdiutil/AttachRecord.h"
#include "platform/linux/hdiutil/LoopTable.h"
#include "platform/linux/hdiutil/Mounting.h"
#include "platform/linux/hdiutil/Udisks.h"
#include "platform/linux/hdiutil/Undo.h"

#include <algorithm>
#include <cerrno>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace platform::hdiutil {
namespace {

// Whether one of the entities has that device.
bool hasDevice(const AttachRecord& record, const std::string& path) {
    return std::ranges::any_of(record.entities, [&path](const PropertyList& entity) {
        const PropertyList* const device = entity.valueForKey("dev-entry");
        return device != nullptr && device->string() != nullptr && *device->string() == path;
    });
}

// The path without links, or in plain form where the system does not tell.
std::string resolved(const std::string& path) {
    return FileManager::resolvingSymlinks(path).value_or(PathString::standardizing(path));
}

// Mount points are noted as they were made, maybe in a folder that is reached by a link.
bool shows(const AttachRecord& record, const std::string& path) {
    return hasDevice(record, path) ||
           std::ranges::any_of(record.volumes, [&path](const MountedVolume& volume) {
               return !volume.mountPoint.empty() && resolved(volume.mountPoint) == path;
           });
}

std::optional<AttachRecord> recordShowing(const AttachRecords& records, const std::string& path) {
    const auto all = records.all();
    const auto found = std::ranges::find_if(
        all, [&path](const AttachRecord& record) { return shows(record, path); });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

// Whether a file system lies on a loop device or on a medium that can be taken out.
bool isOnRemovableDevice(dev_t device) {
    constexpr unsigned loopMajor = 7; // Linux allocated devices, admin-guide/devices.txt
    if (major(device) == loopMajor) {
        return true;
    }
    const std::string folder =
        format("/sys/dev/block/{}:{}", std::uint64_t{major(device)}, std::uint64_t{minor(device)});
    for (const char* const place : {"/removable", "/../removable"}) {
        const auto contents = FileManager::contentsAtPath(folder + place, 16);
        if (contents && !contents->empty() && contents->front() == std::byte{'1'}) {
            return true;
        }
    }
    return false;
}

// The disk service lets users unmount what it has mounted for them.
bool unmountByService(const std::string& path) {
    Udisks* const service = Udisks::shared();
    const std::string device = LoopTable::deviceMountedAt(path);
    if (service == nullptr || device.empty()) {
        errno = EPERM;
        return false;
    }
    return service->unmount(device);
}

std::optional<Failure> unmountForeign(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return Failure::ofSystem(errno);
    }
    if (!isMountPoint(path)) {
        return Failure{"not a mount point"};
    }
    if (!isOnRemovableDevice(status.st_dev)) {
        return Failure{"not on a disk image or a removable disk"};
    }
    const bool isUnmounted =
        ::umount2(path.c_str(), UMOUNT_NOFOLLOW) == 0 || (errno == EPERM && unmountByService(path));
    return isUnmounted ? std::nullopt : std::optional(Failure::ofSystem(errno));
}

} // namespace

std::optional<Failure> detachVolume(const std::string& path) {
    const auto records = AttachRecords::open();
    if (!records) {
        return Failure::ofSystem(errno);
    }
    const std::string place = resolved(path);
    const auto record = recordShowing(*records, place);
    if (!record) {
        return unmountForeign(place);
    }
    if (std::ranges::any_of(record->volumes, isBusy)) {
        return Failure::ofSystem(EBUSY);
    }
    if (!undoWholly(*record, *records)) {
        return Failure::ofSystem(errno);
    }
    // Ours may have been ejected elsewhere, and another volume of that name mounted in its place.
    return isMountPoint(place) ? unmountForeign(place) : std::nullopt;
}

} // namespace platform::hdiutil
