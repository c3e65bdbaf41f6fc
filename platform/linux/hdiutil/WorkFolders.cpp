// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/WorkFolders.h"

#include "platform/FileManager.h"
#include "platform/linux/Environment.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/hdiutil/PropertyText.h"

#include <algorithm>
#include <cerrno>

#include <unistd.h>

#include <sys/stat.h>

namespace platform::hdiutil::WorkFolders {
namespace {

constexpr mode_t privateMode = 0700;

// Makes the folder `name` in `parent`, or takes the one that is there when nobody else could have
// put it there.
std::optional<std::string> privateFolder(const std::optional<std::string>& parent,
                                         std::string_view name) {
    if (!parent) {
        return std::nullopt;
    }
    std::string path = *parent;
    path.append("/").append(name);
    if (::mkdir(path.c_str(), privateMode) != 0 && errno != EEXIST) {
        return std::nullopt;
    }
    struct stat status {};
    const bool isOurs = ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
                        status.st_uid == ::geteuid() && (status.st_mode & 0022U) == 0;
    if (!isOurs) {
        errno = EPERM;
        return std::nullopt;
    }
    return path;
}

std::optional<std::string> absoluteVariable(const char* name) {
    const std::string_view value = environmentVariable(name);
    return value.starts_with('/') ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::string> runtimeFolder() {
    auto folder = absoluteVariable("XDG_RUNTIME_DIR");
    if (!folder && ::geteuid() == 0) {
        folder = "/run";
    }
    errno = ENOENT; // where there is none, the system says nothing
    return privateFolder(folder, "quillmere");
}

std::optional<std::string> cacheFolder() {
    auto folder = absoluteVariable("XDG_CACHE_HOME");
    if (!folder) {
        if (const auto home = FileManager::homeDirectory()) {
            folder = *home + "/.cache";
        }
    }
    // By the rules for these folders, who needs one makes it.
    if (folder) {
        ::mkdir(folder->c_str(), privateMode);
    }
    errno = ENOENT;
    return privateFolder(folder, "quillmere");
}

// Leaves room for a number within the 255 bytes that file systems allow.
std::string cutToFit(std::string name) {
    constexpr std::size_t longest = 240;
    name.resize(std::min(name.size(), longest));
    while (!isUTF8(name)) {
        name.pop_back();
    }
    return name;
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

} // namespace

std::optional<std::string> records() {
    return privateFolder(runtimeFolder(), "attached");
}

std::optional<std::string> expandedDisks() {
    return privateFolder(cacheFolder(), "disks");
}

std::optional<std::string> freeMountPoint(std::string_view label) {
    constexpr int attempts = 1000;
    const auto parent = privateFolder(runtimeFolder(), "volumes");
    if (!parent) {
        return std::nullopt;
    }
    const std::string name = folderNameForLabel(label);
    for (int number = 0; number < attempts; ++number) {
        std::string path = *parent + "/" + name;
        if (number > 0) {
            path.append(" ").append(std::to_string(number));
        }
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0) {
            return errno == ENOENT ? std::optional(path) : std::nullopt;
        }
    }
    return std::nullopt;
}

bool makeMountPoint(const std::string& path) {
    return ::mkdir(path.c_str(), privateMode) == 0;
}

std::string folderNameForLabel(std::string_view label) {
    std::string name(label);
    std::erase_if(name, isControl);
    // The path must be the same in a property list.
    name = cutToFit(propertyText(name));
    std::ranges::replace(name, '/', ':');
    if (name.empty() || name == "." || name == "..") {
        return "Untitled";
    }
    return name;
}

} // namespace platform::hdiutil::WorkFolders
