// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

/// Texts in the user's language, from the catalogue of the application that uses this. Texts are
/// UTF-8 whatever the catalogue and the locale are written in.
namespace platform::LocalizedStrings {

/// Looks texts up in the catalogue `domain` under `folder`, an absolute path, from now on. Chooses
/// the user's language (LANGUAGE, LC_ALL, LC_MESSAGES, LANG) unless the application has chosen one.
/// Called again, it goes over to the other catalogue, or to another language of the same one.
///
/// False, and nothing is changed, for an empty domain or one with a "/", and for a folder that is
/// not absolute. A catalogue that does not exist is no error: it has no texts.
///
/// For the application, while it starts: no other thread may use a locale meanwhile.
QM_EXPORT bool bindCatalogue(const std::string& domain, const std::string& folder);

/// The text for `key`, or the key itself where there is no catalogue, or it has no such text or
/// one that is not UTF-8. The empty key gives an empty text. Any thread.
QM_EXPORT [[nodiscard]] std::string stringForKey(const std::string& key);

/// The text for `key` with `arguments`, UTF-8 texts, in place of its conversions, as
/// `replacingConversions` puts them. Any thread.
QM_EXPORT [[nodiscard]] std::string format(const std::string& key,
                                           std::initializer_list<std::string_view> arguments);

/// `text` with an argument in place of each conversion, in their order, or the n-th for "%n$@".
/// The arguments are formatted already: a conversion only says where its argument goes, and
/// "%@", "%s", "%ld", "%lu", "%5d" and "%.1f" all mean the same. "%%" is a percent sign.
///
/// Texts of translators are trusted with nothing: whatever has no argument, "%n", "%*d" and
/// everything else that is no conversion stays as it is written. Arguments that no conversion asks
/// for are left out. A percent sign in an argument means nothing. Any thread.
QM_EXPORT [[nodiscard]] std::string
replacingConversions(std::string_view text, std::span<const std::string_view> arguments);

} // namespace platform::LocalizedStrings
