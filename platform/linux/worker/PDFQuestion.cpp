// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/PDFQuestion.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/worker/PDFAnswer.h"

namespace platform::worker {
namespace {

std::optional<PDFDocumentProperties> ask(MediaWorker& worker, const Descriptor& file,
                                         bool wantsText) {
    MediaRequest request;
    request.kind = MediaKind::pdfDocument;
    request.wantsText = wantsText;
    std::optional<PDFDocumentProperties> properties;
    const bool isAnswered = worker.ask(request, file.number(), [&](DataView value) {
        properties = decodedPDFProperties(value);
        // What nobody asked for is not what was asked for either.
        return properties && (wantsText || !properties->hasText);
    });
    return isAnswered ? properties : std::nullopt;
}

} // namespace

std::optional<PDFDocumentProperties>
pdfDocumentProperties(MediaWorker& worker, const std::string& path, bool wantsText) {
    const Descriptor file = openRegularFile(path);
    if (file.number() < 0) {
        return std::nullopt;
    }
    const auto properties = ask(worker, file, wantsText);
    // The content of a page can do more harm than all else in the file.
    return properties || !wantsText ? properties : ask(worker, file, false);
}

} // namespace platform::worker
