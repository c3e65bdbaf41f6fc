// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The mounted file systems, as the kernel lists them (proc(5), /proc/[pid]/mountinfo).
namespace platform::MountTable {

struct Mount {
    std::uint64_t id = 0;
    std::string device;     ///< "major:minor"
    std::string root;       ///< the folder of the file system that is mounted
    std::string mountPoint; ///< where
    std::string type;       ///< "ext4"
    std::string source;     ///< what was mounted, mostly the path of a device

    friend bool operator==(const Mount&, const Mount&) = default;
};

/// Reads the kernel's text; lines that are not of its form are left out.
[[nodiscard]] std::vector<Mount> parse(std::string_view mountinfo);

/// The mounts that this process sees; none where the kernel does not tell.
[[nodiscard]] std::vector<Mount> current();

/// Those mounts that together show everything of the local file systems once: no pseudo and no
/// network file systems, and nothing that another of them shows as well.
[[nodiscard]] std::vector<Mount> localMounts(std::vector<Mount> mounts);

} // namespace platform::MountTable
