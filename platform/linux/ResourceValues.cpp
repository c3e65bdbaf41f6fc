// SPDX-License-Identifier: Apache-2.0
#include "platform/ResourceValues.h"

#include "platform/FileManager.h"
#include "platform/FileTags.h"
#include "platform/PathString.h"
#include "platform/UniformType.h"
#include "platform/linux/HiddenNames.h"

#include <chrono>
#include <limits>

#include <fcntl.h>

#include <linux/stat.h>
#include <sys/stat.h>

namespace platform {
namespace {

using UniformType::ItemKind;

// What the kernel tells of an item in one call, and the names taken from its path.
struct Item {
    const std::string& path;
    std::string name;
    struct statx status;
};

bool isDirectory(const Item& item) {
    return S_ISDIR(item.status.stx_mode);
}

ItemKind kindOf(const Item& item) {
    switch (item.status.stx_mode & S_IFMT) {
    case S_IFDIR:
        return (item.status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0 ? ItemKind::volume
                                                                         : ItemKind::folder;
    case S_IFLNK: return ItemKind::symbolicLink;
    case S_IFIFO: return ItemKind::namedPipe;
    case S_IFSOCK: return ItemKind::socket;
    case S_IFCHR: return ItemKind::characterDevice;
    case S_IFBLK: return ItemKind::blockDevice;
    default:
        return (item.status.stx_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0
                   ? ItemKind::executableFile
                   : ItemKind::file;
    }
}

// A damaged file system can hold any number of seconds; those that no Date reaches are no date.
std::optional<Date> dateOf(const statx_timestamp& time) {
    constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / 1'000'000 - 1;
    if (time.tv_sec > limit || time.tv_sec < -limit) {
        return std::nullopt;
    }
    return Date(std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_nsec / 1000));
}

// The name as it is on disk: a path may end in "." or "..", which no folder is called.
std::string nameOf(const std::string& path) {
    std::string name = PathString::lastPathComponent(path);
    if (name == "." || name == "..") {
        if (const auto realPath = FileManager::resolvingSymlinks(path)) {
            return PathString::lastPathComponent(*realPath);
        }
    }
    return name;
}

std::string directoryOf(const std::string& path) {
    const auto end = path.find_last_not_of('/');
    const auto slash = end == std::string::npos ? end : path.rfind('/', end);
    if (slash == std::string::npos) {
        return ".";
    }
    return path.substr(0, slash);
}

bool isHidden(const Item& item) {
    return item.name.starts_with('.') || isListedAsHidden(directoryOf(item.path), item.name);
}

void setSizes(ResourceValues& values, const Item& item, ResourceKeySet keys) {
    if (isDirectory(item)) {
        return;
    }
    const std::uint64_t allocated = item.status.stx_blocks * 512;
    if (keys.contains(ResourceKey::fileSize)) {
        values.fileSize = item.status.stx_size;
    }
    if (keys.contains(ResourceKey::totalFileAllocatedSize)) {
        values.totalFileAllocatedSize = allocated;
    }
    if (keys.contains(ResourceKey::fileAllocatedSize)) {
        values.fileAllocatedSize = allocated;
    }
}

void setDates(ResourceValues& values, const Item& item, ResourceKeySet keys) {
    if (keys.contains(ResourceKey::creationDate) && (item.status.stx_mask & STATX_BTIME) != 0) {
        values.creationDate = dateOf(item.status.stx_btime);
    }
    if (keys.contains(ResourceKey::contentModificationDate)) {
        values.contentModificationDate = dateOf(item.status.stx_mtime);
    }
}

void setFlags(ResourceValues& values, const Item& item, ResourceKeySet keys) {
    if (keys.contains(ResourceKey::isDirectory)) {
        values.isDirectory = isDirectory(item);
    }
    if (keys.contains(ResourceKey::isSymbolicLink)) {
        values.isSymbolicLink = S_ISLNK(item.status.stx_mode);
    }
    if (keys.contains(ResourceKey::isHidden)) {
        values.isHidden = isHidden(item);
    }
}

// What is told by the type alone.
void setTypeValues(ResourceValues& values, const Item& item, ResourceKeySet keys) {
    const std::string identifier =
        UniformType::identifierForItem(kindOf(item), PathString::pathExtension(item.name));
    if (keys.contains(ResourceKey::isPackage)) {
        values.isPackage =
            isDirectory(item) && UniformType::conformsTo(identifier, "com.apple.package");
    }
    if (keys.contains(ResourceKey::localizedTypeDescription)) {
        values.localizedTypeDescription = UniformType::kindForIdentifier(identifier);
    }
    if (keys.contains(ResourceKey::effectiveIcon)) {
        values.effectiveIcon = iconForType(identifier);
    }
    if (keys.contains(ResourceKey::typeIdentifier)) {
        values.typeIdentifier = identifier;
    }
}

} // namespace

std::optional<ResourceValues> resourceValues(const std::string& path, ResourceKeySet keys) {
    Item item{path, nameOf(path), {}};
    constexpr unsigned wanted = STATX_BASIC_STATS | STATX_BTIME;
    constexpr int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
    if (::statx(AT_FDCWD, path.c_str(), flags, wanted, &item.status) != 0) {
        return std::nullopt;
    }
    ResourceValues values;
    if (keys.contains(ResourceKey::name)) {
        values.name = item.name;
    }
    setSizes(values, item, keys);
    setDates(values, item, keys);
    setFlags(values, item, keys);
    setTypeValues(values, item, keys);
    if (keys.contains(ResourceKey::tagNames)) {
        values.tagNames = FileTags::read(path);
    }
    return values;
}

} // namespace platform
