// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"
#include "platform/Json.h"

#include <optional>

/// Values in the form in which they pass between our own processes: CBOR (RFC 8949), and of that
/// what JSON has, in one spelling only. Lengths come first, numbers that are not integers have 64
/// bits, the names of members are texts. Any thread.
namespace platform::Cbor {

/// The most levels that lists and objects may have; a value outside of them has level 0.
inline constexpr int maximumDepth = 8;

/// The bytes of `value`. Texts are taken as they are. nullopt beyond `maximumDepth`.
[[nodiscard]] std::optional<Data> encoded(const Json& value);

/// The value that all of `bytes` is. Integers are std::int64_t wherever that holds them. nullopt
/// for what `encoded` never writes: other kinds of values, text that is not UTF-8, too many levels,
/// lengths and integers longer than they need be, anything cut off or left over. Names that occur
/// twice are left to the caller.
[[nodiscard]] std::optional<Json> decoded(DataView bytes);

} // namespace platform::Cbor
