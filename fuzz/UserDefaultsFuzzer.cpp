// SPDX-License-Identifier: Apache-2.0
// Takes bytes for the file of the user's settings, and reads every key in every way.
#include "fuzz/Fuzzing.h"
#include "platform/PropertyListReadings.h"
#include "platform/UserDefaults.h"
#include "tests/unit/support/MemoryFile.h"

#include <cmath>

namespace {

using fuzzing::require;
using platform::PropertyList;
using platform::UserDefaults;

/// Texts read as the C library reads them, but for numbers that only it knows.
void checkText(const std::string& text) {
    const PropertyList value(text);
    require(platform::integerValue(value) == std::strtoll(text.c_str(), nullptr, 10));
    const double number = platform::doubleValue(value);
    require(number == std::strtod(text.c_str(), nullptr) ||
            text.find_first_of("xXiInN") != std::string::npos);
    require(platform::boolValue(value) || platform::integerValue(value) == 0);
}

void checkKey(const UserDefaults& defaults, const std::string& key, const PropertyList& value) {
    require(!(value == value) || defaults.objectForKey(key) == value);
    require((defaults.arrayForKey(key) != nullptr) == (value.array() != nullptr));
    require(defaults.dictionaryForKey(key).has_value() == (value.dictionary() != nullptr));
    require(defaults.dataForKey(key).has_value() == (value.data() != nullptr));
    require(!defaults.stringArrayForKey(key) || value.array() != nullptr);
    require(defaults.boolForKey(key) == platform::boolValue(value));
    require(defaults.integerForKey(key) == platform::integerValue(value));
    require(!(std::abs(defaults.doubleForKey(key)) > 0) || defaults.stringForKey(key));
    if (const std::string* const text = value.string()) {
        require(defaults.stringForKey(key) == *text);
        checkText(*text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // As a text, too: what is left of a property list after mutation seldom holds a number.
    checkText(fuzzing::textOf(data, size).c_str());
    const MemoryFile file(fuzzing::textOf(data, size));
    // A path that leads there anew each time.
    UserDefaults defaults(std::string("/proc/self/fd/").append(std::to_string(file.descriptor())));
    defaults.registerDefaults({{"registered", std::int64_t{1}}});
    const auto list = PropertyList::parse(fuzzing::bytesOf(data, size));
    const auto* const values = list ? list->dictionary() : nullptr;
    require(defaults.objectForKey("registered").has_value());
    if (values == nullptr) {
        require(defaults.integerForKey("registered") == 1);
        return 0;
    }
    for (const auto& [key, value] : *values) {
        checkKey(defaults, key, value);
    }
    return 0;
}
