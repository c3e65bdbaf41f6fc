// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"
#include "tests/unit/support/BoundCatalogue.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::PDFDocumentProperties;
using Keys = QMMetadataService::Keys;
using Texts = std::vector<std::string>;

// Every key, in an order of its own.
const Keys allKeys{"searchable", "encrypted", "creator",   "author",
                   "title",      "size",      "pageCount", "pdfVersion"};

QMMetadataEntries entriesOf(const std::optional<PDFDocumentProperties>& document,
                            const Keys& keys = allKeys) {
    QMMetadataService::Settings settings;
    settings.pdfReader = [&document](const std::string&, bool) { return document; };
    QMMetadataEntries entries;
    QMMetadataService::init(settings)->extractPDFMetadata("/paper.pdf", keys, entries);
    return entries;
}

// "key=value" of each entry.
Texts valuesOf(const PDFDocumentProperties& document, const Keys& keys = allKeys) {
    Texts texts;
    for (const auto& entry : entriesOf(document, keys)) {
        texts.push_back(entry->key.value_or("none") + "=" + entry->value.value_or("none"));
    }
    return texts;
}

PDFDocumentProperties paper() {
    PDFDocumentProperties document;
    document.pageCount = 12;
    document.version = {1, 7};
    document.title.emplace("On Files");
    document.author.emplace("A. Author");
    document.creator.emplace("Writer");
    document.isEncrypted = true;
    document.hasText = true;
    return document;
}

TEST(QMMetadataServicePDF, TellsSevenThingsInTheirOrder) {
    EXPECT_EQ(valuesOf(paper()),
              (Texts{"pageCount=12", "pdfVersion=1.7", "title=On Files", "author=A. Author",
                     "creator=Writer", "encrypted=meta.yes", "searchable=meta.yes"}));
}

TEST(QMMetadataServicePDF, LabelsEntriesAndMarksThePages) {
    Texts labels;
    for (const auto& entry : entriesOf(paper())) {
        labels.push_back(entry->localizedKey.value_or("none") + (entry->isPrimary ? "!" : ""));
    }
    EXPECT_EQ(labels,
              (Texts{"meta.pdf.pageCount!", "meta.pdf.version", "meta.pdf.title", "meta.pdf.author",
                     "meta.pdf.creator", "meta.pdf.encrypted", "meta.pdf.searchable"}));
}

TEST(QMMetadataServicePDF, WhatTheFileDoesNotSayHasNoEntry) {
    PDFDocumentProperties document;
    document.pageCount = 1;
    EXPECT_EQ(valuesOf(document),
              (Texts{"pageCount=1", "encrypted=meta.no", "searchable=meta.no"}));
    document.version = PDFDocumentProperties::Version();
    document.hasText = false;
    EXPECT_EQ(valuesOf(document),
              (Texts{"pageCount=1", "pdfVersion=0.0", "encrypted=meta.no", "searchable=meta.no"}));
    EXPECT_EQ(valuesOf(document, {"title"}), Texts());
}

TEST(QMMetadataServicePDF, TextsThatAreThereAreShownEvenWhenEmpty) {
    PDFDocumentProperties document;
    document.title.emplace();
    document.author.emplace(" x\n");
    EXPECT_EQ(valuesOf(document, {"title", "author", "creator"}), (Texts{"title=", "author= x\n"}));
}

TEST(QMMetadataServicePDF, NothingCanBeSearchedWithoutPages) {
    PDFDocumentProperties document;
    EXPECT_EQ(valuesOf(document), (Texts{"pageCount=0", "encrypted=meta.no"}));
}

TEST(QMMetadataServicePDF, CountsAndVersionsOfAnySize) {
    PDFDocumentProperties document;
    document.pageCount = 18446744073709551615U;
    document.version = {2147483647, -2147483647 - 1};
    EXPECT_EQ(valuesOf(document, {"pageCount", "pdfVersion"}),
              (Texts{"pageCount=18446744073709551615", "pdfVersion=2147483647.-2147483648"}));
}

TEST(QMMetadataServicePDF, EachKeyIsToldAlone) {
    for (const std::string& text : valuesOf(paper())) {
        EXPECT_EQ(valuesOf(paper(), {text.substr(0, text.find('='))}), Texts{text});
    }
    EXPECT_EQ(valuesOf(paper(), {}), Texts());
    EXPECT_EQ(valuesOf(paper(), {"dimensions", "subject"}), Texts());
}

TEST(QMMetadataServicePDF, AFileThatIsNoPDFHasNoEntries) {
    EXPECT_TRUE(entriesOf(std::nullopt).empty());
}

TEST(QMMetadataServicePDF, EntriesAreAppended) {
    QMMetadataService::Settings settings;
    settings.pdfReader = [](const std::string&, bool) { return paper(); };
    QMMetadataEntries entries{QMMetadataEntry::entryWithKey("k", "l", "v")};
    QMMetadataService::init(settings)->extractPDFMetadata("/x", {"title"}, entries);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries.front()->key, "k");
    EXPECT_EQ(entries.back()->value, "On Files");
}

TEST(QMMetadataServicePDF, TextIsLookedForOnlyForItsKey) {
    Texts asked;
    QMMetadataService::Settings settings;
    settings.pdfReader = [&asked](const std::string& path, bool wantsText) {
        asked.push_back(path + (wantsText ? "+" : "-"));
        return paper();
    };
    const auto service = QMMetadataService::init(settings);
    QMMetadataEntries entries;
    service->extractPDFMetadata("/a", {"searchable"}, entries);
    service->extractPDFMetadata("/b", {"pageCount", "title"}, entries);
    service->extractPDFMetadata("/c", {}, entries);
    EXPECT_EQ(asked, (Texts{"/a+", "/b-", "/c-"}));
}

TEST(QMMetadataServicePDF, LabelsAndAnswersAreTranslated) {
    const BoundCatalogue catalogue("de");
    Texts texts;
    for (const auto& entry : entriesOf(paper(), {"pdfVersion", "encrypted"})) {
        texts.push_back(entry->localizedKey.value_or("") + ": " + entry->value.value_or(""));
    }
    EXPECT_EQ(texts, (Texts{"Fassung: 1.7", "meta.pdf.encrypted: Gewiß"}));
}

} // namespace
