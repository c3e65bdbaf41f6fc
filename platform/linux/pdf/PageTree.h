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

/// The pages of a document, which must outlive this. The root of their tree is read once, as it may
/// list all of them. One thread.
class PageTree {
public:
    explicit PageTree(PDFDoc& document);

    /// How many pages there are. That is what the root says, unless it cannot be true: then they
    /// are counted.
    [[nodiscard]] std::uint64_t numberOfPages() const;
    /// The parts of the first page; nullopt when there is none.
    [[nodiscard]] std::optional<PageParts> firstPage() const;

private:
    PDFDoc& m_document;
    Object m_root;
};

} // namespace platform::pdf
