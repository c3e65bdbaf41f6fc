// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

/// The vocabulary of the pasteboard, which carries values between applications.
namespace platform::Pasteboard {

/// The type of a file's URL as text: the platform's uniform type identifier for file URLs.
inline constexpr std::string_view typeFileURL = "public.file-url";

/// How a reader wants the value of a type; the numbers are the platform's.
enum class ReadingOptions : unsigned {
    asData = 0,
    asString = 1,
};

} // namespace platform::Pasteboard
