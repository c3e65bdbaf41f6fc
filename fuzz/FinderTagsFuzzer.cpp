// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "platform/linux/TagNames.h"

#include <algorithm>

namespace {

namespace TagNames = platform::TagNames;
using fuzzing::require;

void checkFinderNames(const std::string& value) {
    const auto names = TagNames::fromFinderValue(value);
    if (!names) {
        return;
    }
    for (const std::string& name : *names) {
        require(name.find('\n') == std::string::npos);
    }
    require(value.ends_with('\0') || TagNames::fromFinderValue(value + '\0').has_value());
}

void checkReconciliation(const TagNames::Names& desktop, const TagNames::Names& finder) {
    const auto all = TagNames::reconciled(desktop, finder);
    require(all.size() <= desktop.size() + finder.size());
    for (const std::string& name : finder) {
        require(std::ranges::find(all, name) != all.end());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string value = fuzzing::textOf(data, size);
    checkFinderNames(value);
    const auto desktop = TagNames::fromDesktopValue(value);
    for (const std::string& name : desktop) {
        require(!name.empty() && name.find(',') == std::string::npos);
    }
    checkReconciliation(desktop, fuzzing::split(value, ';'));
    return 0;
}
