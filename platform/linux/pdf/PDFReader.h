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

/// The two ways that readPDF() has, the second one when the first gives nullopt. An excerpt
/// (Excerpt.h) costs about as much however long the document is, and gives nullopt for short and
/// for unusual ones. Both answer the same of documents that are not damaged.
[[nodiscard]] std::optional<PDFDocumentProperties> readExcerptOfPDF(int descriptor, bool wantsText);
[[nodiscard]] std::optional<PDFDocumentProperties> readWholePDF(int descriptor, bool wantsText);

} // namespace platform::pdf
