// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <string_view>

namespace platform::media {

/// The bytes in a text of the kind "Raw profile type ...", in which ImageMagick, and others after
/// it, keep blocks that PNG had no chunk for: a line with the profile's name, one with its length
/// in decimal, then the bytes in hexadecimal, with line ends anywhere between them. Empty when the
/// text is not of that form. Any thread.
[[nodiscard]] Data bytesOfProfileText(std::string_view text);

} // namespace platform::media
