// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PDFDocument.h"

#include <optional>

/// Reading what PDFs say of themselves, for the process that untrusted media are read in.
namespace platform::pdf {

/// Does what poppler would otherwise do when it is first used, so that readPDF() needs no file but
/// its own, and silences it. Call it once, before other threads exist.
void preparePDFReader();

/// Reads the PDF in the regular file that `descriptor` is open for. The descriptor stays the
/// caller's; its position does not matter. The file is read, nothing else is opened or written.
/// nullopt when it is no PDF, or too damaged to find its catalog. Looks for text on the first page
/// for `wantsText` alone. After preparePDFReader(), any thread.
[[nodiscard]] std::optional<PDFDocumentProperties> readPDF(int descriptor, bool wantsText);

/// Documents with fewer objects are read as a whole as fast as an excerpt of them is made.
inline constexpr std::uint64_t fewestObjectsForExcerpt = 100;

/// The two ways that readPDF() has, of which it takes the second when the first gives nullopt. An
/// excerpt (Excerpt.h) costs about as much however long the document is; there is none of documents
/// with fewer objects than that, and of unusual ones. Where a document is damaged in parts that an
/// excerpt leaves out, it answers what the rest says, and the second way what can be repaired.
[[nodiscard]] std::optional<PDFDocumentProperties>
readExcerptOfPDF(int descriptor, bool wantsText,
                 std::uint64_t fewestObjects = fewestObjectsForExcerpt);
[[nodiscard]] std::optional<PDFDocumentProperties> readWholePDF(int descriptor, bool wantsText);

} // namespace platform::pdf
