// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a desktop entry and as an Exec line, and checks what must hold for any of them.
#include "fuzz/Fuzzing.h"
#include "platform/linux/DesktopEntry.h"

using platform::DesktopEntry;

namespace {

// One word, as Exec lines quote it.
std::string inQuotes(std::string_view word) {
    std::string result(1, '"');
    for (const char c : word) {
        if (std::string_view("\"`$\\").find(c) != std::string_view::npos) {
            result.push_back('\\');
        } else if (c == '%') {
            result.push_back('%');
        }
        result.push_back(c);
    }
    return result.append(1, '"');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzzing::textOf(data, size);
    static_cast<void>(DesktopEntry::parse(text));
    const auto words = DesktopEntry::words(text);
    if (!words) {
        return 0;
    }
    // What was read survives being written and read again.
    std::string line;
    for (const std::string& word : *words) {
        line.append(inQuotes(word)).append(1, ' ');
    }
    fuzzing::require(DesktopEntry::words(line) == words);
    return 0;
}
