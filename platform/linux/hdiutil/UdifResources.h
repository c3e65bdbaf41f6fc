// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <optional>
#include <vector>

namespace platform::hdiutil {

/// The block tables ("resource-fork", "blkx") of a property list, in its order. nullopt when it is
/// no such list. The bytes may be hostile; any thread.
[[nodiscard]] std::optional<std::vector<Data>> blockTablesOfPropertyList(DataView bytes);

/// The same of a classic resource fork, which images carried before they had property lists: a
/// header, the resources' data, and a map of types, references and names (Inside Macintosh: More
/// Macintosh Toolbox, "Resource File Format"). Together they are never larger than the fork.
[[nodiscard]] std::optional<std::vector<Data>> blockTablesOfResourceFork(DataView fork);

} // namespace platform::hdiutil
