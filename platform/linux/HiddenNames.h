// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Whether the file ".hidden" in `directory` has a line that is `name`: the desktops' way to hide
/// an item without renaming it. Any thread.
[[nodiscard]] bool isListedAsHidden(const std::string& directory, std::string_view name);

} // namespace platform
