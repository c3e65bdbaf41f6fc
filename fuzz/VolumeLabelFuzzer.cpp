// SPDX-License-Identifier: Apache-2.0
// Reads bytes as the label of a volume, which names a folder and is told in property lists.
#include "fuzz/Fuzzing.h"
#include "platform/PropertyList.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/hdiutil/PropertyText.h"
#include "platform/linux/hdiutil/WorkFolders.h"

#include <algorithm>

namespace {

using namespace platform::hdiutil;
using fuzzing::require;

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

void checkFolder(const std::string& name) {
    require(!name.empty() && name.size() <= 240 && name != "." && name != "..");
    require(name.find('/') == std::string::npos && std::ranges::none_of(name, isControl));
    require(platform::isUTF8(name) && propertyText(name) == name);
    require(WorkFolders::folderNameForLabel(name) == name);
}

// XML has no such characters (XML 1.0, "Characters").
bool hasExcludedCharacter(const std::string& text) {
    const auto isExcluded = [](char c) {
        return isControl(c) && std::string_view("\t\n\r\x7F").find(c) == std::string_view::npos;
    };
    return std::ranges::any_of(text, isExcluded) ||
           text.find("\xEF\xBF\xBE") != std::string::npos ||
           text.find("\xEF\xBF\xBF") != std::string::npos;
}

// What is put into a property list comes out of it. XML reads all line breaks as one kind.
void checkText(const std::string& text) {
    require(propertyText(text) == text && !hasExcludedCharacter(text));
    const platform::PropertyList list(text);
    using Format = platform::PropertyList::Format;
    require(platform::PropertyList::parse(list.serialized(Format::binary)) == list);
    const auto again = platform::PropertyList::parse(list.serialized(Format::xml));
    require(again && (*again == list || text.find('\r') != std::string::npos));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string label = fuzzing::textOf(data, size);
    checkFolder(WorkFolders::folderNameForLabel(label));
    checkText(propertyText(label));
    return 0;
}
