// SPDX-License-Identifier: Apache-2.0
// Reads bytes as the list of hidden items in a folder.
#include "fuzz/Fuzzing.h"
#include "platform/linux/HiddenNames.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using fuzzing::require;
    const std::string text = fuzzing::textOf(data, size);
    const auto names = platform::namesInHiddenList(text);
    auto lines = fuzzing::split(text, '\n');
    // Behind the last line break there is a line only when there is something.
    if (lines.back().empty()) {
        lines.pop_back();
    }
    for (const std::string& line : lines) {
        require(names.contains(line));
    }
    std::string written;
    for (const std::string& name : names) {
        require(name.find('\n') == std::string::npos);
        written.append(name).append(1, '\n');
    }
    require(names.size() <= lines.size());
    require(platform::namesInHiddenList(written) == names);
    return 0;
}
