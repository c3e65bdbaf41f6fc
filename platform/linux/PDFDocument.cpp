// SPDX-License-Identifier: Apache-2.0
#include "platform/PDFDocument.h"

#include "platform/linux/worker/PDFQuestion.h"

namespace platform {

std::optional<PDFDocumentProperties> pdfDocumentPropertiesOfFile(const std::string& path,
                                                                 bool wantsText) {
    return worker::pdfDocumentProperties(
        worker::MediaWorker::shared(worker::MediaKind::pdfDocument), path, wantsText);
}

} // namespace platform
