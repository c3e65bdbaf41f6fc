// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace platform {

/// Owned bytes of no particular encoding.
using Data = std::vector<std::byte>;

/// Borrowed bytes; the owner must outlive the view.
using DataView = std::span<const std::byte>;

/// The bytes of `text`, borrowed.
inline DataView bytesOf(std::string_view text) {
    return std::as_bytes(std::span<const char>(text.data(), text.size()));
}

/// The bytes as they stand, borrowed.
inline std::string_view charactersOf(DataView bytes) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as characters
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace platform
