// SPDX-License-Identifier: Apache-2.0
// Reads PDFs for processes that would rather not; see docs/architecture.md.
#include "platform/linux/pdf/PDFReader.h"
#include "platform/linux/worker/PDFAnswer.h"
#include "platform/linux/worker/WorkerLoop.h"

int main() {
    using namespace platform;
    pdf::preparePDFReader();
    return worker::serveMedia([](const worker::MediaRequest& request,
                                 int descriptor) -> std::optional<Data> {
        if (request.kind != worker::MediaKind::pdfDocument) {
            return std::nullopt;
        }
        const auto properties = pdf::readPDF(descriptor, request.wantsText);
        return properties ? std::optional(worker::encodedPDFProperties(*properties)) : std::nullopt;
    });
}
