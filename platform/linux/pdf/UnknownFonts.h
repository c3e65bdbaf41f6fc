// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/Poppler.h"

namespace platform::pdf {

/// Replaces, in memory, the fonts in `resources`, and in those of forms in them, whose encoding or
/// set of characters the file only names, by ones that poppler takes as they are. East Asian texts
/// often have such fonts (ISO 32000-2, 9.7.5.2): what the names mean stands in tables that a
/// process which can open nothing does not have. What is written in them is something else then,
/// but that something is can be told. Answers whether there are any.
[[nodiscard]] bool replaceUnknownFonts(XRef& objects, const Object& resources);

} // namespace platform::pdf
