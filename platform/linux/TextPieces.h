// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <string_view>

namespace platform {

/// Takes what stands before the first `separator` off the front of `text`, together with that;
/// everything where there is none.
inline std::string_view takePiece(std::string_view& text, char separator) {
    const auto end = std::min(text.find(separator), text.size());
    const std::string_view piece = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return piece;
}

/// The path without the slashes at its end, but for the one of "/".
[[nodiscard]] inline std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    return path;
}

} // namespace platform
