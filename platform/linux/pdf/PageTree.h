// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/Poppler.h"

#include <cstdint>
#include <optional>

namespace platform::pdf {

/// A page as far as it matters for what is written on it.
struct PageParts {
    Object contents;  ///< a stream, or an array of them
    Object resources; ///< of the page, or the nearest node above it that has some
};

/// How many pages a document has. That is what the root of their tree says, unless it cannot be
/// true: then the pages are counted.
[[nodiscard]] std::uint64_t numberOfPages(PDFDoc& document);

/// The parts of the first page; nullopt when there is none.
[[nodiscard]] std::optional<PageParts> firstPage(PDFDoc& document);

} // namespace platform::pdf
