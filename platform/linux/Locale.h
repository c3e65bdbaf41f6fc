// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

/// The user's locale by category, for this folder's own use. Any thread.
namespace platform {

/// The locale of a user who set none, or the C locale.
inline constexpr std::string_view posixLocaleName = "en_US_POSIX";

/// What LC_ALL, the variable of `category` ("LC_TIME") and LANG say, in this order, as an ICU
/// locale name without codeset and modifier; `posixLocaleName` when nothing or the C locale is
/// set.
[[nodiscard]] std::string localeName(const char* category);

/// The decimal separator of LC_NUMERIC's locale, as it is when the process first asks.
[[nodiscard]] std::string_view decimalSeparator();

} // namespace platform
