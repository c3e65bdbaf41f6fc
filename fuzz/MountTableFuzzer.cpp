// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "platform/linux/MountTable.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using fuzzing::require;
    namespace MountTable = platform::MountTable;
    const std::string text = fuzzing::textOf(data, size);
    const auto mounts = MountTable::parse(text);
    const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
    require(mounts.size() <= lines);
    for (const MountTable::Mount& mount : mounts) {
        require(mount.mountPoint.starts_with('/') && !mount.root.empty() && !mount.type.empty());
        require(mount.mountPoint.find('\0') == std::string::npos);
    }
    const auto local = MountTable::localMounts(mounts);
    for (const MountTable::Mount& mount : local) {
        require(std::ranges::find(mounts, mount) != mounts.end());
    }
    require(MountTable::localMounts(local).size() == local.size());
    return 0;
}
