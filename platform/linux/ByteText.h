// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace platform {

/// Whether `bytes` have `text` at `offset`; false when they end before.
[[nodiscard]] inline bool hasTextAt(std::span<const std::byte> bytes, std::size_t offset,
                                    std::string_view text) {
    const auto wanted = std::as_bytes(std::span(text));
    return offset <= bytes.size() && wanted.size() <= bytes.size() - offset &&
           std::ranges::equal(bytes.subspan(offset, wanted.size()), wanted);
}

} // namespace platform
