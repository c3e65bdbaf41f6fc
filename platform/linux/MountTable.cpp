// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/MountTable.h"

#include "platform/FileManager.h"
#include "platform/linux/TextPieces.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace platform::MountTable {
namespace {

// What holds no files of this computer: views of the kernel, and other computers' files.
constexpr std::array<std::string_view, 39> foreignTypes{
    "9p",       "afs",        "autofs",     "binder",    "binfmt_misc", "bpf",    "ceph",
    "cgroup",   "cgroup2",    "cifs",       "configfs",  "debugfs",     "devpts", "devtmpfs",
    "efivarfs", "fuse",       "fusectl",    "hugetlbfs", "lustre",      "mqueue", "ncpfs",
    "nfs",      "nfs4",       "nfsd",       "nsfs",      "proc",        "pstore", "ramfs",
    "resctrl",  "rpc_pipefs", "securityfs", "selinuxfs", "smackfs",     "smb3",   "smbfs",
    "sysfs",    "tracefs",    "virtiofs",   "xenfs",
};

bool isLocal(const Mount& mount) {
    return !mount.type.starts_with("fuse.") &&
           std::ranges::find(foreignTypes, mount.type) == foreignTypes.end();
}

std::string_view nextField(std::string_view& line) {
    return takePiece(line, ' ');
}

bool isOctal(char c) {
    return c >= '0' && c <= '7';
}

// Blanks, tabs, line breaks and backslashes stand as a backslash and three octal digits.
std::string unescaped(std::string_view field) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool isEscape = field[i] == '\\' && field.size() - i > 3 && isOctal(field[i + 1]) &&
                              isOctal(field[i + 2]) && isOctal(field[i + 3]);
        if (!isEscape) {
            text.push_back(field[i]);
            continue;
        }
        const int byte =
            (field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0');
        text.push_back(static_cast<char>(byte));
        i += 3;
    }
    return text;
}

std::optional<Mount> parseLine(std::string_view line) {
    Mount mount;
    const auto id = wholeNumber<std::uint64_t>(nextField(line));
    mount.id = id.value_or(0);
    nextField(line); // the parent's id
    mount.device = nextField(line);
    mount.root = unescaped(nextField(line));
    mount.mountPoint = unescaped(nextField(line));
    while (!line.empty() && nextField(line) != "-") {
        // Options, and fields that newer kernels may add.
    }
    mount.type = nextField(line);
    mount.source = unescaped(nextField(line));
    const bool isWhole = id && !mount.root.empty() && mount.mountPoint.starts_with('/') &&
                         mount.mountPoint.find('\0') == std::string::npos && !mount.type.empty();
    return isWhole ? std::optional(std::move(mount)) : std::nullopt;
}

bool isAtOrBelow(std::string_view path, std::string_view folder) {
    if (folder == "/") {
        return path.starts_with('/');
    }
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

std::vector<Mount> parse(std::string_view mountinfo) {
    std::vector<Mount> mounts;
    while (!mountinfo.empty()) {
        if (auto mount = parseLine(takePiece(mountinfo, '\n'))) {
            mounts.push_back(*std::move(mount));
        }
    }
    return mounts;
}

std::vector<Mount> current() {
    constexpr std::size_t maximumSize = std::size_t{16} << 20;
    const auto contents = FileManager::contentsAtPath("/proc/self/mountinfo", maximumSize);
    return contents ? parse(charactersOf(*contents)) : std::vector<Mount>();
}

std::vector<Mount> localMounts(std::vector<Mount> mounts) {
    std::erase_if(mounts, [](const Mount& mount) { return !isLocal(mount); });
    // The one that shows most of a file system first; of equals the one with the shortest path.
    std::ranges::stable_sort(mounts, [](const Mount& left, const Mount& right) {
        return std::pair(left.root.size(), left.mountPoint.size()) <
               std::pair(right.root.size(), right.mountPoint.size());
    });
    std::vector<Mount> chosen;
    for (Mount& mount : mounts) {
        const bool isShown = std::ranges::any_of(chosen, [&mount](const Mount& other) {
            return other.device == mount.device && isAtOrBelow(mount.root, other.root);
        });
        if (!isShown) {
            chosen.push_back(std::move(mount));
        }
    }
    return chosen;
}

} // namespace platform::MountTable
