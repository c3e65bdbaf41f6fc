// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"
#include "platform/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>

/// What a property-list value says to a caller who wants one kind of value and is given another.
/// Numbers and texts stand in for each other; every other kind reads as nothing. None of these
/// depends on the locale, none fails. Any thread.
///
/// Texts are read from their beginning, behind blanks, tabs and line breaks of ASCII; what follows
/// the part that was understood is left out.
namespace platform {

/// Numbers: whether they are not 0. Texts: whether they begin with "Y", "y", "T", "t" or, behind
/// a sign and zeros, a digit from 1 to 9.
QM_EXPORT [[nodiscard]] bool boolValue(const PropertyList& value);

/// Numbers without their fraction; texts by their decimal digits, with a sign or without. 1 for
/// true. What is out of range becomes the nearest value; a number that is none becomes 0.
QM_EXPORT [[nodiscard]] std::int64_t integerValue(const PropertyList& value);

/// Numbers; texts by their decimal digits, with a sign, a fraction behind "." and an exponent, or
/// without. 1 for true. Texts out of range become infinite or 0; they name neither infinity nor
/// numbers in other bases.
QM_EXPORT [[nodiscard]] double doubleValue(const PropertyList& value);

/// Texts; numbers in decimal digits, those with a fraction in up to 16 of them. "1" for true, "0"
/// for false. nullopt for every other kind.
QM_EXPORT [[nodiscard]] std::optional<std::string> stringValue(const PropertyList& value);

} // namespace platform
