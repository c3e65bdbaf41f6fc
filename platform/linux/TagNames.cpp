// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/TagNames.h"

#include "platform/PropertyList.h"
#include "platform/linux/PropertyListTexts.h"
#include "platform/linux/TextPieces.h"

#include <algorithm>
#include <utility>

namespace platform::TagNames {
namespace {

constexpr char separator = ',';
constexpr char colorMark = '\n';

} // namespace

Names fromDesktopValue(std::string_view value) {
    Names names;
    while (!value.empty()) {
        const std::string_view name = takePiece(value, separator);
        if (!name.empty()) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::string toDesktopValue(const Names& names) {
    std::string value;
    for (const std::string& name : withoutColors(names)) {
        if (!value.empty() && !name.empty()) {
            value.push_back(separator);
        }
        value.append(name);
    }
    // A name of commas alone leaves nothing to read.
    return fromDesktopValue(value).empty() ? std::string() : value;
}

bool fitsDesktops(std::string_view name) {
    return !name.empty() && name.find(separator) == std::string_view::npos &&
           name.find(colorMark) == std::string_view::npos;
}

bool isEntry(std::string_view entry) {
    const auto mark = entry.find(colorMark);
    const std::string_view color = mark == std::string_view::npos ? "0" : entry.substr(mark + 1);
    return color.size() == 1 && color.front() >= '0' && color.front() <= '7';
}

std::optional<FinderList> fromFinderValue(std::string value) {
    if (auto entries = textsIn(PropertyList::parse(bytesOf(value)))) {
        return FinderList{*std::move(entries), false};
    }
    if (!value.ends_with('\0')) {
        return std::nullopt;
    }
    value.pop_back();
    auto entries = textsIn(PropertyList::parse(bytesOf(value)));
    return entries ? std::optional(FinderList{*std::move(entries), true}) : std::nullopt;
}

std::optional<std::string> toFinderValue(const FinderList& list) {
    const PropertyList::Array array(list.entries.begin(), list.entries.end());
    const Data bytes = PropertyList(array).serialized(PropertyList::Format::binary);
    if (bytes.empty()) {
        return std::nullopt;
    }
    std::string value(charactersOf(bytes));
    if (list.endsInZero) {
        value.push_back('\0');
    }
    return value;
}

Names withoutColors(Names names) {
    for (std::string& name : names) {
        name.resize(std::min(name.find(colorMark), name.size()));
    }
    return names;
}

} // namespace platform::TagNames
