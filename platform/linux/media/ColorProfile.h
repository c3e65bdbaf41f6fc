// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <optional>
#include <string>
#include <string_view>

namespace platform::media {

/// What the profile of the colour space sRGB is called (IEC 61966-2-1), for files that name the
/// space without a profile.
inline constexpr std::string_view sRGBProfileName = "sRGB IEC61966-2.1";

/// More than any colour profile has; larger ones are not looked at.
inline constexpr std::size_t maximumProfileSize = 4U << 20U;

/// The description in an ICC profile, in English where it has several, UTF-8. nullopt when it has
/// none or is no profile. Any thread.
[[nodiscard]] std::optional<std::string> nameOfProfile(DataView profile);

/// Whether an ICC profile is one for shades of grey (ICC.1, "GRAY" in its header).
[[nodiscard]] bool isGrayProfile(DataView profile);

} // namespace platform::media
