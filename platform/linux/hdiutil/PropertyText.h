// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace platform::hdiutil {

/// `text` as it can stand in an XML property list: what is not UTF-8, and the control characters
/// and noncharacters that XML 1.0 (section 2.2) excludes, become U+FFFD.
[[nodiscard]] std::string propertyText(std::string_view text);

} // namespace platform::hdiutil
