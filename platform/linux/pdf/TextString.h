// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace platform::pdf {

/// A text string (ISO 32000-2, 7.9.2.2) in UTF-8: UTF-16 of either order or UTF-8 where it begins
/// with the mark of one, PDFDocEncoding otherwise. It ends before its first NUL, or where it would
/// become longer than 40 KiB. What is no character becomes U+FFFD. Any thread.
[[nodiscard]] std::string textOfString(std::string_view bytes);

} // namespace platform::pdf
