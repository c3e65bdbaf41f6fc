// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <optional>
#include <string>

/// Texts as bytes in an encoding. Any thread.
namespace platform::Text {

/// The text that `bytes` hold in UTF-8; nullopt unless all of them are well-formed. NUL and a
/// byte-order mark are characters like others.
[[nodiscard]] std::optional<std::string> fromUTF8(DataView bytes);

} // namespace platform::Text
