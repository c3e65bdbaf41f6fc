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

/// The Finder's way: a property list of names, each followed by a line break and a colour, which
/// is dropped; a zero byte at the end, as Samba writes one, is taken. nullopt for all else.
[[nodiscard]] std::optional<Names> fromFinderValue(std::string value);

/// The names of both. The Finder's list can hold names that the desktops' cannot, so it is the
/// better of two that agree; otherwise those of the desktops come first.
[[nodiscard]] Names reconciled(Names desktop, Names finder);

} // namespace platform::TagNames
