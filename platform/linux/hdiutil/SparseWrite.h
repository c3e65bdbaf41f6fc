// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Writes regular files that are open as `descriptor`, whatever its position, and leaves holes in
/// them where a disk is zero. Functions answer false, with errno set, when the system refuses. Any
/// thread; several may write to different places of one file.
namespace platform::hdiutil {

/// Whether no byte is anything but zero.
[[nodiscard]] bool isZero(std::span<const std::byte> bytes);

/// Writes all of the bytes from `offset` on.
[[nodiscard]] bool writeAt(int descriptor, std::uint64_t offset, std::span<const std::byte> bytes);

/// The same where the file has a hole so far: blocks of zeros stay one.
[[nodiscard]] bool writeSparsely(int descriptor, std::uint64_t offset,
                                 std::span<const std::byte> bytes);

/// Gives the file `size` bytes: the first `kept` of those that it has, and a hole.
[[nodiscard]] bool resizeWithHole(int descriptor, std::uint64_t kept, std::uint64_t size);

} // namespace platform::hdiutil
