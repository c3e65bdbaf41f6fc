// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <optional>
#include <string>
#include <vector>

namespace platform::hdiutil {

/// A block table as it lies in an image, not yet looked into.
struct UdifResource {
    std::string name;
    Data bytes;
};

/// The block tables ("resource-fork", "blkx") of a property list, in its order. nullopt when it is
/// no such list. The bytes may be hostile; any thread.
[[nodiscard]] std::optional<std::vector<UdifResource>> blockTablesOfPropertyList(DataView bytes);

/// The same of a classic resource fork, which images carried before they had property lists: a
/// header, the resources' data, and a map of types, references and names (Inside Macintosh: More
/// Macintosh Toolbox, "Resource File Format"). Together they are never larger than the fork.
[[nodiscard]] std::optional<std::vector<UdifResource>> blockTablesOfResourceFork(DataView fork);

} // namespace platform::hdiutil
