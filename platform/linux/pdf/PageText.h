// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/PageTree.h"

#include <optional>

namespace platform::pdf {

/// Whether anything is written on a page of the document, be it a blank, beyond its edges or
/// invisible; texts of annotations are no part of it. nullopt when looking for it takes more than
/// two seconds of processor time.
[[nodiscard]] std::optional<bool> hasText(PDFDoc& document, PageParts& page);

} // namespace platform::pdf
