// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/ImageText.h"

#include "platform/Text.h"

namespace platform::media {

std::optional<std::string> imageText(std::string_view field) {
    constexpr std::size_t longest = 64U << 10U;
    std::string_view text = field.substr(0, field.find('\0'));
    text = text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
    if (text.empty() || text.size() > longest) {
        return std::nullopt;
    }
    auto decoded = Text::fromUTF8(bytesOf(text));
    return decoded ? decoded : Text::fromISOLatin1(bytesOf(text));
}

} // namespace platform::media
