// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

/// Byte counts for people.
namespace platform::ByteCountFormatter {

/// `bytes` in the file style: decimal units (1 KB is 1000 bytes), no fraction for bytes and KB, up
/// to one digit for MB and up to two from GB on, a final zero dropped, ties rounded away from
/// zero, and the next unit as soon as the rounded value would reach 1000. Zero is "Zero KB". The
/// decimal separator is that of the user's locale. Any thread.
[[nodiscard]] std::string fileStyle(std::int64_t bytes);

} // namespace platform::ByteCountFormatter
