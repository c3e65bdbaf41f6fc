// SPDX-License-Identifier: Apache-2.0
// Takes the first line for a translated text, and the others for arguments of its conversions.
#include "fuzz/Fuzzing.h"
#include "platform/LocalizedStrings.h"

#include <algorithm>

namespace {

using fuzzing::require;
using platform::LocalizedStrings::replacingConversions;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto lines = fuzzing::split(fuzzing::textOf(data, size), '\n');
    const std::string& text = lines.front();
    const std::vector<std::string_view> arguments(lines.begin() + 1, lines.end());

    // Each percent sign brings one argument at most.
    std::size_t longest = 0;
    for (const std::string_view argument : arguments) {
        longest = std::max(longest, argument.size());
    }
    const auto signs = static_cast<std::size_t>(std::ranges::count(text, '%'));
    require(replacingConversions(text, arguments).size() <= text.size() + signs * longest);

    // Without arguments nothing changes but "%%"; a percent sign in an argument means
    // nothing.
    const std::string plain = replacingConversions(text, {});
    require(text.find("%%") != std::string::npos || plain == text);
    const std::string_view whole = text;
    require(replacingConversions("%1$@", std::span(&whole, 1)) == text);
    return 0;
}
