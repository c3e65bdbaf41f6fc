// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/MountTable.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace platform {

/// Where to look for tags.
struct SearchScope {
    std::vector<std::string> startingPoints;       ///< items; folders with all below them
    std::unordered_set<std::string> excludedPaths; ///< folders below them that are not entered
};

/// What the local file systems among `reachable` hold: those of `mounts` that their paths lead to.
[[nodiscard]] SearchScope scopeOf(const std::vector<MountTable::Mount>& mounts,
                                  std::vector<MountTable::Mount> reachable);

/// What this computer's own file systems hold.
[[nodiscard]] SearchScope localComputerScope();

/// The paths of the items within `scope` that carry a tag named exactly `tag`, sorted. Walks with
/// several threads and returns when they are done. Throws std::bad_alloc when any of them runs out
/// of memory.
[[nodiscard]] std::vector<std::string> itemsWithTag(const SearchScope& scope,
                                                    const std::string& tag);

} // namespace platform
