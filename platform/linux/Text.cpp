// SPDX-License-Identifier: Apache-2.0
#include "platform/Text.h"

#include "platform/linux/Utf8.h"

namespace platform::Text {

std::optional<std::string> fromUTF8(DataView bytes) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as characters
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return isUTF8(text) ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace platform::Text
