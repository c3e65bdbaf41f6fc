// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::media {

/// The text in a field of an image file: up to the first NUL, without blanks at its end, in UTF-8.
/// What is no UTF-8 is taken for ISO Latin 1, which old cameras and programs write. nullopt when
/// nothing is left, or more than 64 KiB. Any thread.
[[nodiscard]] std::optional<std::string> imageText(std::string_view field);

} // namespace platform::media
