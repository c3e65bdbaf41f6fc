// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform::pdf {

/// What makes a long document a short one: an update of it (ISO 32000-2, 7.5.6) that is nowhere but
/// in memory. Its table of objects names those that tell of the document and its first page.
/// Readers look up objects in the newest table first, so they do not read the document's own,
/// unless something is missing here. The tree of pages is cut down to the way to its first page
/// where it lists many.
struct Excerpt {
    std::string update; ///< is to be read behind the last byte of the file
    /// Readers who have room for as many objects, or for fewer, missed nothing.
    std::uint64_t endOfNumbers = 0;
    std::uint64_t numberOfObjects = 0; ///< in all of the document, as it says
    /// The children that the root of pages has, when only the first one is shown.
    std::optional<std::uint64_t> numberOfChildren;
};

/// Makes an excerpt of the PDF in the regular file of `size` bytes that `descriptor` is open for;
/// that stays the caller's, and its position does not matter. nullopt when the document has fewer
/// objects, and when anything about it is unusual. What only text on a page needs is left out
/// without `wantsText`. Throws std::bad_alloc. Any thread.
[[nodiscard]] std::optional<Excerpt> excerptOf(int descriptor, std::uint64_t size, bool wantsText,
                                               std::uint64_t fewestObjects);

} // namespace platform::pdf
