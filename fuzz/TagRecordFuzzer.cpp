// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "platform/linux/TagRecord.h"

#include <algorithm>

namespace {

namespace TagNames = platform::TagNames;
using fuzzing::require;
using platform::TagRecord;
using TagNames::Names;

bool contains(const Names& names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

void checkValue(const std::string& value) {
    for (const std::string& name : TagNames::fromDesktopValue(value)) {
        require(!name.empty() && name.find(',') == std::string::npos);
    }
    if (const auto list = TagNames::fromFinderValue(value)) {
        const auto written = TagNames::toFinderValue(*list);
        require(written && TagNames::fromFinderValue(*written) == list);
    }
}

/// Every step on the way to the new list shows names of the old and the new one only, and the last
/// one shows the new one.
void checkChanges(TagRecord record, const Names& names) {
    const Names before = record.names().value_or(Names());
    const Names after = TagNames::withoutColors(names);
    const auto changes = platform::changesFor(record, names);
    if (!changes) {
        return;
    }
    for (const auto& change : *changes) {
        valueOf(record, change.attribute) = change.value;
        for (const std::string& name : record.names().value_or(Names())) {
            require(contains(before, name) || contains(after, name));
        }
    }
    require(record.names().value_or(Names()) == after);
}

/// Empty parts stand for attributes that are not there.
TagRecord::Value valueOfPart(const std::vector<std::string>& parts, std::size_t index) {
    return index < parts.size() && !parts[index].empty() ? TagRecord::Value(parts[index])
                                                         : TagRecord::Value();
}

} // namespace

/// The input is the new names, the desktops' list, the base and the Finder's list, parted by three
/// percent signs in all; the Finder's may hold more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzzing::textOf(data, size);
    checkValue(text);
    const auto parts = fuzzing::split(text, '%');
    TagRecord record;
    record.desktop = valueOfPart(parts, 1);
    record.base = valueOfPart(parts, 2);
    record.finder[0] = valueOfPart(parts, 3);
    const Names names = fuzzing::split(parts.front(), ';');
    checkChanges(record, names);
    // The same with lists that can be read, which random bytes seldom are.
    record.finder[0] = TagNames::toFinderValue({fuzzing::split(parts.back(), ';'), false});
    record.finder[2] = record.finder[0];
    checkChanges(record, names);
    checkChanges(record, {});
    return 0;
}
