// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/Mounting.h"

#include "platform/FileManager.h"
#include "platform/Format.h"
#include "platform/Task.h"
#include "platform/linux/DetachedProcess.h"
#include "platform/linux/hdiutil/LoopDevice.h"
#include "platform/linux/hdiutil/LoopTable.h"
#include "platform/linux/hdiutil/Udisks.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace platform::hdiutil {
namespace {

// Names of kernel drivers that differ from those of the file systems.
std::string_view driverFor(std::string_view type) {
    return type == "ntfs" ? "ntfs3" : type;
}

// A way to mount a volume answers what `mountVolume` does.
std::optional<std::string> mountByKernel(const VolumeInFile& volume,
                                         const std::string& mountPoint) {
    const auto device =
        LoopDevice::attach(volume.file, volume.offset, volume.length, volume.isReadOnly);
    if (!device) {
        return std::nullopt;
    }
    // Nothing in an image may gain rights here.
    unsigned long flags = MS_NOSUID | MS_NODEV;
    if (volume.isReadOnly) {
        flags |= MS_RDONLY;
    }
    const std::string driver(driverFor(volume.volume.type));
    if (::mount(device->path().c_str(), mountPoint.c_str(), driver.c_str(), flags, nullptr) != 0) {
        return std::nullopt;
    }
    return device->path();
}

/// Runs a program to its end without any output; whether it succeeded.
bool run(const std::string& program, const std::vector<std::string>& arguments) {
    const auto path = DetachedProcess::findProgram(program);
    if (!path) {
        return false;
    }
    const auto launched = Task::launch({.executable = *path, .arguments = arguments});
    const auto* task = std::get_if<std::shared_ptr<Task>>(&launched);
    return task != nullptr && (*task)->waitUntilExit() == 0;
}

/// A FUSE program for a type of file system.
struct FuseProgram {
    std::string_view type;
    std::string_view program;
    bool takesOffset; ///< by the option "offset"; without it, only whole files will do
    std::string_view options;
};

constexpr std::array<FuseProgram, 6> fusePrograms{{
    {"iso9660", "fuseiso", false, "ro,nosuid,nodev"},
    {"ext2", "fuse2fs", true, "ro,nosuid,nodev"},
    {"ext3", "fuse2fs", true, "ro,nosuid,nodev"},
    {"ext4", "fuse2fs", true, "ro,nosuid,nodev"},
    {"squashfs", "squashfuse", true, "ro,nosuid,nodev"},
    {"apfs", "fsapfsmount", true, "ro"},
}};

std::optional<std::string> mountByFuse(const VolumeInFile& volume, const std::string& mountPoint) {
    const auto* const program =
        std::ranges::find(fusePrograms, volume.volume.type, &FuseProgram::type);
    if (program == fusePrograms.end() || (!volume.isWholeFile && !program->takesOffset)) {
        return std::nullopt;
    }
    std::string options(program->options);
    if (!volume.isWholeFile) {
        options.append(",offset=").append(std::to_string(volume.offset));
    }
    const bool isRun = run(std::string(program->program), {volume.file, mountPoint, "-o", options});
    if (!isRun || !isMountPoint(mountPoint)) {
        return std::nullopt;
    }
    return volume.file;
}

bool hasSpaceFor(const std::string& folder, std::uint64_t bytes) {
    struct statvfs status {};
    return ::statvfs(folder.c_str(), &status) == 0 &&
           status.f_bavail > bytes / std::max<std::uint64_t>(status.f_frsize, 1);
}

// Where the volume is not the whole file, the extractor gets a device or nothing.
std::optional<std::string> mountByCopy(const VolumeInFile& volume, const std::string& mountPoint) {
    if (!hasSpaceFor(mountPoint, volume.length)) {
        return std::nullopt;
    }
    std::optional<LoopDevice> device;
    std::string source = volume.file;
    if (!volume.isWholeFile) {
        device = LoopDevice::attach(volume.file, volume.offset, volume.length, true);
        if (!device) {
            return std::nullopt;
        }
        source = device->path();
    }
    // Without "-spd" it would also extract other files, where the name of this one has wildcards.
    if (!run("7z", {"x", "-y", "-bd", "-spd", "-o" + mountPoint, source})) {
        return std::nullopt;
    }
    ::chmod(mountPoint.c_str(), 0500);
    return volume.file;
}

bool removeCopy(const std::string& folder) {
    // What was copied keeps its own modes, which may forbid its removal.
    std::error_code error;
    ::chmod(folder.c_str(), 0700);
    std::filesystem::recursive_directory_iterator entries(folder, error);
    for (; !error && entries != std::filesystem::recursive_directory_iterator();
         entries.increment(error)) {
        if (entries->is_directory(error) && !entries->is_symlink(error)) {
            std::filesystem::permissions(entries->path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, error);
        }
    }
    std::filesystem::remove_all(folder, error);
    errno = error.value();
    return !error;
}

bool unmountHere(const MountedVolume& volume) {
    if (::umount2(volume.mountPoint.c_str(), UMOUNT_NOFOLLOW) == 0) {
        return true;
    }
    const int reason = errno;
    if (volume.method == MountMethod::fuse && (run("fusermount", {"-u", volume.mountPoint}) ||
                                               run("fusermount3", {"-u", volume.mountPoint}))) {
        return true;
    }
    // The program that unmounts for users keeps the reason to itself: the volume is in use.
    errno = volume.method == MountMethod::fuse && reason == EPERM ? EBUSY : reason;
    return false;
}

// The name of a device may be another image's by now, and the file may have another name.
bool isStillOurs(const ServiceDevice& device) {
    return device.sequence == 0 ? LoopTable::shows(device.path, device.file, device.offset)
                                : LoopTable::sequenceOf(device.path) == device.sequence;
}

// Whether the service has taken a device away that was asked for, or nobody has to.
bool takeAway(const ServiceDevice& device, bool isOnlyDevice) {
    if (!isStillOurs(device)) {
        return true;
    }
    Udisks* const service = Udisks::shared();
    if (service == nullptr) {
        errno = ENOTCONN;
        return false;
    }
    return (isOnlyDevice || service->unmount(device.path)) &&
           (service->removeLoop(device.path) || !isStillOurs(device));
}

// The user, or the desktop, may have unmounted the volume or taken the device away. The service is
// asked in any case: it need not see the mounts that this process sees.
bool unmountByService(const ServiceDevice& device) {
    if (!device.path.empty()) {
        return takeAway(device, false);
    }
    // Nothing of ours was mounted before the device was noted.
    return std::ranges::all_of(LoopTable::unusedDevices(device.file, device.offset),
                               [&device](const std::string& path) {
                                   return takeAway({path, device.file, device.offset}, true);
                               });
}

// nullopt where the system does not tell, as of a mount whose program has ended.
std::optional<bool> lookForMount(const std::string& path) {
    struct stat status {};
    struct stat parent {};
    if (::lstat(path.c_str(), &status) != 0) {
        return errno == ENOENT || errno == ENOTDIR ? std::optional(false) : std::nullopt;
    }
    if (::lstat((path + "/..").c_str(), &parent) != 0) {
        return std::nullopt;
    }
    return status.st_dev != parent.st_dev || status.st_ino == parent.st_ino;
}

} // namespace

bool mountByService(const VolumeInFile& volume, MountedVolume& target,
                    const std::function<bool()>& note) {
    Udisks* const service = Udisks::shared();
    if (service == nullptr) {
        return false;
    }
    auto device = service->addLoop(volume.file, volume.offset, volume.length, volume.isReadOnly);
    if (!device) {
        return false;
    }
    target.device.path = *std::move(device);
    target.device.sequence = LoopTable::sequenceOf(target.device.path);
    if (!note()) {
        return false;
    }
    auto mountPoint = service->mount(target.device.path);
    if (!mountPoint) {
        return false;
    }
    target.mountPoint = *std::move(mountPoint);
    return isMountPoint(target.mountPoint);
}

std::optional<std::string> mountVolume(const VolumeInFile& volume, MountedVolume& target,
                                       const std::function<bool()>& note) {
    constexpr std::array<std::pair<MountMethod, decltype(&mountByKernel)>, 3> ways{{
        {MountMethod::kernel, mountByKernel},
        {MountMethod::fuse, mountByFuse},
        {MountMethod::copy, mountByCopy},
    }};
    for (const auto& [method, mount] : ways) {
        if (std::exchange(target.method, method) != method && !note()) {
            return std::nullopt;
        }
        if (auto device = mount(volume, target.mountPoint)) {
            return device;
        }
    }
    return std::nullopt;
}

bool isMountPoint(const std::string& path) {
    return lookForMount(path).value_or(false);
}

bool mayBeMountPoint(const std::string& path) {
    return lookForMount(path).value_or(true);
}

bool isThere(const MountedVolume& volume) {
    switch (volume.method) {
    case MountMethod::copy: return FileManager::fileExistsAtPath(volume.mountPoint);
    case MountMethod::service:
        return LoopTable::mountPointOf(volume.device.path) == volume.mountPoint &&
               isStillOurs(volume.device);
    default: return isMountPoint(volume.mountPoint);
    }
}

bool isBusy(const MountedVolume& volume) {
    // The first such call only marks the mount as not used since; it is refused where it is used.
    return volume.method != MountMethod::copy && isMountPoint(volume.mountPoint) &&
           ::umount2(volume.mountPoint.c_str(), MNT_EXPIRE) != 0 && errno == EBUSY;
}

bool unmountVolume(const MountedVolume& volume) {
    if (volume.method == MountMethod::copy) {
        return removeCopy(volume.mountPoint);
    }
    if (volume.method == MountMethod::service) {
        return unmountByService(volume.device);
    }
    if (mayBeMountPoint(volume.mountPoint) && !unmountHere(volume)) {
        return false;
    }
    return ::rmdir(volume.mountPoint.c_str()) == 0 || errno == ENOENT;
}

} // namespace platform::hdiutil
