// SPDX-License-Identifier: Apache-2.0
// How often a process is asked for a PDF.
#include "platform/linux/worker/PDFQuestion.h"

#include "platform/linux/worker/PDFAnswer.h"
#include "tests/unit/support/MediaWorkerOnDemand.h"

#include <gtest/gtest.h>

namespace {

using platform::PDFDocumentProperties;
using platform::worker::MediaWorker;

/// A file for which the process does what `word` says, with a document of seven pages.
std::string orderOf(std::string_view word) {
    PDFDocumentProperties document;
    document.pageCount = 7;
    const auto value = platform::worker::encodedPDFProperties(document);
    std::string order(word);
    order.push_back(' ');
    for (const std::byte byte : value) {
        order.push_back(std::to_integer<char>(byte));
    }
    return order;
}

std::optional<PDFDocumentProperties> answerTo(std::string_view word) {
    MediaWorker worker(settingsOfMediaWorker());
    const TemporaryFolder folder;
    return pdfDocumentProperties(worker, folder.file("paper.pdf", orderOf(word)), true);
}

TEST(PDFQuestion, IsAskedOnceWhenTheFileIsNoPDF) {
    EXPECT_EQ(answerTo("value-of-less"), std::nullopt);
}

TEST(PDFQuestion, IsAskedAgainWithoutTextWhenTheProcessEndsOverIt) {
    const auto document = answerTo("crash-over-text");
    ASSERT_TRUE(document);
    EXPECT_EQ(document->pageCount, 7U);
    EXPECT_EQ(document->hasText, std::nullopt);
}

} // namespace
