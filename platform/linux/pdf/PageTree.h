// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/Excerpt.h"
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
    /// `excerpt` is what the document was made short with, if it was.
    explicit PageTree(PDFDoc& document, const Excerpt* excerpt = nullptr);

    /// How many pages there are. That is what the root says, unless it cannot be true: then they
    /// are counted. nullopt when they had to be and the document is an excerpt.
    [[nodiscard]] std::optional<std::uint64_t> numberOfPages() const;
    /// The parts of the first page; nullopt when there is none, or none in an excerpt.
    [[nodiscard]] std::optional<PageParts> firstPage() const;

private:
    [[nodiscard]] bool isTrusted(std::uint64_t claim, const Object& children) const;

    PDFDoc& m_document;
    const Excerpt* m_excerpt;
    Object m_root;
};

} // namespace platform::pdf
