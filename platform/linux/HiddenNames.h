// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

namespace platform {

/// Whether the file ".hidden" in `directory` has a line that is `name`: the desktops' way to hide
/// an item without renaming it. Any thread.
[[nodiscard]] bool isListedAsHidden(const std::string& directory, std::string_view name);

/// The names in what such a file says: its lines, as they stand. They are bytes, and may be empty.
[[nodiscard]] std::unordered_set<std::string> namesInHiddenList(std::string_view text);

} // namespace platform
