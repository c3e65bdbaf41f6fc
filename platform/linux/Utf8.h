// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace platform {

/// Whether the bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing cut off.
[[nodiscard]] bool isUTF8(std::string_view text);

} // namespace platform
