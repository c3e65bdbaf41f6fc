// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/TagNames.h"

#include "platform/PropertyList.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace platform::TagNames {
namespace {

// The list as the desktops would have stored and read it: no commas, no empty names.
Names asDesktopsReadIt(const Names& names) {
    Names result;
    for (const std::string& name : names) {
        std::ranges::move(fromDesktopValue(name), std::back_inserter(result));
    }
    return result;
}

} // namespace

Names fromDesktopValue(std::string_view value) {
    Names names;
    while (!value.empty()) {
        const auto comma = value.find(',');
        if (comma != 0) {
            names.emplace_back(value.substr(0, comma));
        }
        value.remove_prefix(comma == std::string_view::npos ? value.size() : comma + 1);
    }
    return names;
}

std::optional<Names> fromFinderValue(std::string value) {
    auto list = PropertyList::parse(bytesOf(value));
    if (!list && value.ends_with('\0')) {
        value.pop_back();
        list = PropertyList::parse(bytesOf(value));
    }
    if (!list || list->array() == nullptr) {
        return std::nullopt;
    }
    Names names;
    for (const PropertyList& element : *list->array()) {
        if (const std::string* text = element.string()) {
            names.push_back(text->substr(0, text->find('\n')));
        }
    }
    return names;
}

Names reconciled(Names desktop, Names finder) {
    if (asDesktopsReadIt(finder) == desktop) {
        return finder;
    }
    for (std::string& name : finder) {
        if (std::ranges::find(desktop, name) == desktop.end()) {
            desktop.push_back(std::move(name));
        }
    }
    return desktop;
}

} // namespace platform::TagNames
