// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

/// Whether a zlib stream (RFC 1950) at the beginning of `input` fills all of `output`, no more and
/// no less. Any thread.
[[nodiscard]] bool inflateInto(std::span<std::byte> output, std::span<const std::byte> input);

/// What such a stream holds; nullopt when it is damaged, or holds more than `limit` bytes. Any
/// thread.
[[nodiscard]] std::optional<std::string> inflated(std::string_view input, std::size_t limit);

} // namespace platform
