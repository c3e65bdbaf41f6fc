// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/PDFQuestion.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/worker/MediaQuestion.h"
#include "platform/linux/worker/PDFAnswer.h"

namespace platform::worker {
namespace {

FileAnswer<PDFDocumentProperties> ask(MediaWorker& worker, const Descriptor& file, bool wantsText) {
    MediaRequest request;
    request.kind = MediaKind::pdfDocument;
    request.wantsText = wantsText;
    return answerTo(request, worker, file, decodedPDFProperties,
                    [wantsText](const PDFDocumentProperties& properties) {
                        return wantsText || !properties.hasText;
                    });
}

} // namespace

std::optional<PDFDocumentProperties>
pdfDocumentProperties(MediaWorker& worker, const std::string& path, bool wantsText) {
    const Descriptor file = openRegularFile(path);
    auto answer = ask(worker, file, wantsText);
    // The content of a page can do more harm than all else in the file.
    if (!answer.properties && !answer.isNothing && wantsText) {
        answer = ask(worker, file, false);
    }
    return answer.properties;
}

} // namespace platform::worker
