// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bit>
#include <cstddef>
#include <span>
#include <string>

namespace platform {

/// The UTF-16 text in a field of fixed size, up to its end or the first NUL, in UTF-8. Surrogates
/// without their other half become U+FFFD; an odd last byte is ignored. Any thread.
[[nodiscard]] std::string utf8FromUtf16(std::span<const std::byte> field, std::endian order);

} // namespace platform
