// SPDX-License-Identifier: Apache-2.0
// PDFs as the confined process reads them that has poppler.
#include "platform/linux/worker/PDFQuestion.h"
#include "tests/unit/support/PDFSamples.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <string>
#include <thread>
#include <vector>

#include <zlib.h>

#include <gtest/gtest.h>

namespace {

using platform::worker::MediaWorker;
using platform::worker::pdfDocumentProperties;
using namespace std::chrono_literals;

MediaWorker::Settings settings() {
    MediaWorker::Settings settings;
    settings.program = QM_TEST_PDF_WORKER;
    settings.limits = {60s, 60s, 60s};
    return settings;
}

// A page whose content is blanks without end: nothing of it can be looked at in between.
std::string pageOfBlanks() {
    const std::string blanks(std::size_t{64} << 20U, ' ');
    std::string packed(::compressBound(blanks.size()), '\0');
    uLongf size = packed.size();
    // NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast): characters as bytes
    EXPECT_EQ(::compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                          reinterpret_cast<const Bytef*>(blanks.data()), blanks.size(), 9),
              Z_OK);
    // NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)
    packed.resize(size);
    std::string parts;
    for (int i = 0; i < 200; ++i) {
        parts += "4 0 R ";
    }
    std::string text("%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
                     "2 0 obj<</Type/Pages/Count 1/Kids[3 0 R]>>endobj\n"
                     "3 0 obj<</Type/Page/Contents[");
    text.append(parts).append("]>>endobj\n4 0 obj<</Filter/FlateDecode/Length ");
    text.append(std::to_string(packed.size())).append(">>stream\n").append(packed);
    return text.append("\nendstream endobj\n5 0 obj<</Title(Blanks)>>endobj\n"
                       "trailer\n<</Root 1 0 R/Info 5 0 R>>\n");
}

TEST(PDFWorker, ReadsEverySampleAsItIsReadHere) {
    MediaWorker worker(settings());
    for (const std::string& name : pdf_samples::names()) {
        for (const bool wantsText : {true, false}) {
            EXPECT_EQ(pdfDocumentProperties(worker, pdf_samples::pathOf(name), wantsText),
                      pdf_samples::read(name, wantsText))
                << name;
        }
    }
}

TEST(PDFWorker, ReadsAsItsFirstFileWhateverItIs) {
    for (const char* name : {"shift-jis.pdf", "open-aes-256.pdf", "gs.pdf", "drawn-font.pdf"}) {
        MediaWorker worker(settings());
        EXPECT_EQ(pdfDocumentProperties(worker, pdf_samples::pathOf(name), true),
                  pdf_samples::read(name))
            << name;
    }
}

TEST(PDFWorker, AnswersSeveralThreads) {
    auto several = settings();
    several.processes = 3;
    MediaWorker worker(several);
    const auto expected = pdf_samples::read("gs.pdf");
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 50; ++n) {
                EXPECT_EQ(pdfDocumentProperties(worker, pdf_samples::pathOf("gs.pdf"), true),
                          expected);
            }
        });
    }
}

TEST(PDFWorker, APageThatTakesTooLongCostsNoMoreThanWhatIsSaidOfIt) {
    const TemporaryFolder folder;
    const std::string path = folder.file("blanks.pdf", pageOfBlanks());
    auto hasty = settings();
    hasty.limits.processor = 500ms;
    MediaWorker worker(hasty);
    const auto document = pdfDocumentProperties(worker, path, true);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->pageCount, 1U);
    EXPECT_EQ(document->title, "Blanks");
    EXPECT_EQ(document->hasText, std::nullopt);
    EXPECT_EQ(pdfDocumentProperties(worker, pdf_samples::pathOf("gs.pdf"), true),
              pdf_samples::read("gs.pdf"));
}

TEST(PDFWorker, WhatIsNoPDFHasNoProperties) {
    const TemporaryFolder folder;
    MediaWorker worker(settings());
    EXPECT_EQ(pdfDocumentProperties(worker, folder.file("text.pdf", "text"), true), std::nullopt);
    EXPECT_EQ(pdfDocumentProperties(worker, folder.file("empty.pdf", ""), true), std::nullopt);
    EXPECT_EQ(pdfDocumentProperties(worker, folder.path("missing.pdf"), true), std::nullopt);
    EXPECT_EQ(pdfDocumentProperties(worker, folder.path(), true), std::nullopt);
}

} // namespace
