// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/hdiutil/PropertyText.h"

#include "platform/linux/Utf8.h"

namespace platform::hdiutil {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

bool isExcludedControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

// U+FFFE and U+FFFF, in well-formed UTF-8.
bool beginsWithExcludedNoncharacter(std::string_view text) {
    return text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF");
}

} // namespace

std::string propertyText(std::string_view text) {
    const std::string valid = replacingInvalidUTF8(text);
    std::string result;
    std::string_view rest = valid;
    while (!rest.empty()) {
        std::size_t used = 1;
        if (isExcludedControl(rest.front())) {
            result.append(replacement);
        } else if (beginsWithExcludedNoncharacter(rest)) {
            result.append(replacement);
            used = replacement.size();
        } else {
            result.push_back(rest.front());
        }
        rest.remove_prefix(used);
    }
    return result;
}

} // namespace platform::hdiutil
