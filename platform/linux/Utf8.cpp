// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Utf8.h"

#include "platform/linux/Icu.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace platform {
namespace {

// ICU counts in 32 bits; longer texts are no texts that anyone reads.
constexpr std::size_t longest = std::numeric_limits<std::int32_t>::max();

// Calls `use(sequence, isValid)` for each character and each ill-formed sequence, until it answers
// false. A text beyond the limits counts as one ill-formed sequence.
template <class Use>
void forEachSequence(std::string_view text, const Use& use) {
    if (text.size() > longest) {
        static_cast<void>(use(text, false));
        return;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): characters as bytes
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t offset = 0;
    while (offset < length) {
        const auto start = static_cast<std::size_t>(offset);
        UChar32 character = 0;
        U8_NEXT(bytes, offset, length, character);
        if (!use(text.substr(start, static_cast<std::size_t>(offset) - start), character >= 0)) {
            return;
        }
    }
}

} // namespace

bool isUTF8(std::string_view text) {
    bool result = true;
    forEachSequence(text, [&result](std::string_view, bool isValid) { return result = isValid; });
    return result;
}

std::string replacingInvalidUTF8(std::string_view text) {
    std::string result;
    forEachSequence(text, [&result](std::string_view sequence, bool isValid) {
        result.append(isValid ? sequence : "\xEF\xBF\xBD");
        return true;
    });
    return result;
}

} // namespace platform
