// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The two ways in which lists of tags are written into attributes. The bytes may be hostile.
namespace platform::TagNames {

using Names = std::vector<std::string>;

/// The desktops' way: UTF-8, joined by commas, without escaping. Empty names are dropped.
[[nodiscard]] Names fromDesktopValue(std::string_view value);

/// What the desktops store for `names`, without colours; empty when nothing is left.
[[nodiscard]] std::string toDesktopValue(const Names& names);

/// Whether the desktops read `name` as it is: it holds neither comma nor colour and is not empty.
[[nodiscard]] bool fitsDesktops(std::string_view name);

/// The Finder's way: a property list of names, each perhaps with a line break and a colour number
/// behind it.
struct FinderList {
    Names entries;           ///< with their colours
    bool endsInZero = false; ///< a zero byte follows the list, as Samba writes it

    friend bool operator==(const FinderList&, const FinderList&) = default;
};

/// nullopt for anything but a property list of texts.
[[nodiscard]] std::optional<FinderList> fromFinderValue(std::string value);

/// The list as a binary property list; nullopt when a name is not UTF-8 or holds a NUL.
[[nodiscard]] std::optional<std::string> toFinderValue(const FinderList& list);

/// Whether the Finder would give back all of `entry`: no line break but the one before a colour
/// number, 0 to 7.
[[nodiscard]] bool isEntry(std::string_view entry);

/// The names without their colours.
[[nodiscard]] Names withoutColors(Names names);

} // namespace platform::TagNames
