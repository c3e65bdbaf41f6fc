// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Texts in the user's language, from the catalogue of the application that uses this.
namespace platform::LocalizedStrings {

/// The text for `key`, or the key itself where the application has no catalogue or the catalogue
/// no such text. UTF-8 where the application asked for that. The empty key gives an empty text.
/// Any thread, once the application has chosen its locale and catalogue.
[[nodiscard]] std::string stringForKey(const std::string& key);

} // namespace platform::LocalizedStrings
