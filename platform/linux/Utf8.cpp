// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Utf8.h"

#include "platform/linux/Icu.h"

#include <cstdint>
#include <limits>

namespace platform {

bool isUTF8(std::string_view text) {
    if (text.size() > std::numeric_limits<std::int32_t>::max()) {
        return false;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): characters as bytes
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t offset = 0;
    while (offset < length) {
        UChar32 character = 0;
        U8_NEXT(bytes, offset, length, character);
        if (character < 0) {
            return false;
        }
    }
    return true;
}

} // namespace platform
