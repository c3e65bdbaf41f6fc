// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

/// Checks of property lists before libplist sees them: it recurses as deep as its input says and
/// expands an object anew for every reference to it, so a file of some hundred bytes can exhaust
/// the stack or the memory.
namespace platform::PropertyListGuard {

inline constexpr std::size_t maximumSize = std::size_t{16} << 20;
inline constexpr std::size_t maximumDepth = 128;

/// Whether the bytes begin as a binary property list.
[[nodiscard]] bool isBinary(DataView bytes);

/// Whether a binary property list is well-formed as far as its objects' places, lengths and
/// references go, without cycles, within `maximumDepth`, of bounded size when expanded, and free of
/// texts that hold a NUL.
[[nodiscard]] bool isSafeBinary(DataView bytes);

/// Whether an XML property list opens at most `maximumDepth` arrays and dictionaries in another and
/// holds no NUL.
[[nodiscard]] bool isSafeXML(DataView bytes);

} // namespace platform::PropertyListGuard
