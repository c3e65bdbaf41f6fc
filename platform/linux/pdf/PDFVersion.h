// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PDFDocument.h"

#include <optional>
#include <string_view>

namespace platform::pdf {

/// How many bytes at the beginning of a file the mark of a PDF has to be found in, as readers agree
/// (ISO 32000-1, Annex H.3.4.1).
inline constexpr std::size_t headerSize = 1024;

/// The version in "major.minor", as at the beginning of `text`: 0.0 when that is none.
[[nodiscard]] PDFDocumentProperties::Version versionIn(std::string_view text);

/// The later of the two.
[[nodiscard]] PDFDocumentProperties::Version laterOf(const PDFDocumentProperties::Version& one,
                                                     const PDFDocumentProperties::Version& other);

/// The version in the header that lies somewhere in the first bytes of a file, 0.0 when it has
/// none; nullopt when they hold no header. Any thread.
[[nodiscard]] std::optional<PDFDocumentProperties::Version>
versionOfHeader(std::string_view firstBytes);

} // namespace platform::pdf
