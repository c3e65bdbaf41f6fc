// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>
#include <vector>

namespace platform {

/// The value of an environment variable; empty when it is not set. Valid until the environment
/// changes, which this process never does.
[[nodiscard]] std::string_view environmentVariable(const char* name);

/// Whether a variable is set, to nothing.
[[nodiscard]] bool isSetButEmpty(const char* name);

/// The folders of a list like that in PATH: what stands between colons, in order, also where that
/// is empty. An empty list has none.
[[nodiscard]] std::vector<std::string_view> foldersInList(std::string_view list);

} // namespace platform
