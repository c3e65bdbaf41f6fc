// SPDX-License-Identifier: Apache-2.0
// What is read of PDFs that other programs, or hands, have made.
#include "platform/linux/pdf/PDFReader.h"

#include "platform/Format.h"
#include "tests/unit/support/MemoryFile.h"
#include "tests/unit/support/PDFSamples.h"

#include <array>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

namespace {

using platform::PDFDocumentProperties;
using platform::pdf::readPDF;

struct Sample {
    const char* name;
    const char* description;
};

constexpr std::array samples{
    Sample{"all.pdf", "1 page, 1.4, title T, author A, creator C, text"},
    Sample{"annotation.pdf", "1 page, 1.4, no text"},
    Sample{"cids.pdf", "1 page, 1.4, text"},
    Sample{"count-far-too-high.pdf", "1 page, 1.4, text"},
    Sample{"count-missing.pdf", "3 pages, 1.4, text"},
    Sample{"count-negative.pdf", "3 pages, 1.4, text"},
    Sample{"count-real.pdf", "3 pages, 1.4, text"},
    Sample{"count-text.pdf", "3 pages, 1.4, text"},
    Sample{"count-too-high.pdf", "1 page, 1.4, text"},
    Sample{"count-too-low.pdf", "3 pages, 1.4, text"},
    Sample{"cut-off.pdf", "no document"},
    Sample{"drawn-font.pdf", "1 page, 1.4, text"},
    Sample{"earlier-version.pdf", "1 page, 1.6, text"},
    Sample{"empty-page.pdf", "1 page, 1.4, no text"},
    Sample{"empty-title.pdf", "1 page, 1.4, title , text"},
    Sample{"escaped-title.pdf", "1 page, 1.4, title a(b)A\n(c), text"},
    Sample{"five-thousand.pdf", "5000 pages, 1.4, title Long, text"},
    Sample{"form-in-form.pdf", "1 page, 1.4, text"},
    Sample{"form-in-itself.pdf", "1 page, 1.4, no text"},
    Sample{"form.pdf", "1 page, 1.4, text"},
    Sample{"glyphs.pdf", "1 page, 1.4, text"},
    Sample{"gs-picture.pdf", "1 page, 1.3, no text"},
    Sample{"gs.pdf", "2 pages, 1.7, title From PostScript, author Someone, creator make, text"},
    Sample{"invisible.pdf", "1 page, 1.4, text"},
    Sample{"joined.pdf", "3 pages, 1.4, text"},
    Sample{"late-header.pdf", "1 page, 1.5, text"},
    Sample{"later-version.pdf", "1 page, 1.7, text"},
    Sample{"line-ends.pdf", "2 pages, 1.4, title Whole, text"},
    Sample{"linear-streams.pdf", "2 pages, 1.5, no text"},
    Sample{"linear.pdf", "1 page, 1.4, title T, author A, creator C, text"},
    Sample{"locked-aes-128.pdf", "0 pages, 1.6, encrypted"},
    Sample{"locked-aes-256.pdf", "0 pages, 1.7, encrypted"},
    Sample{"locked-damaged.pdf", "0 pages, 1.7, encrypted"},
    Sample{"locked-rc4-128.pdf", "0 pages, 1.4, encrypted"},
    Sample{"locked-rc4-40.pdf", "0 pages, 1.4, encrypted"},
    Sample{"locked-streams.pdf", "0 pages, 1.7, encrypted"},
    Sample{"long-gs.pdf", "120 pages, 1.7, title Long, text"},
    Sample{"long-linear-streams.pdf", "120 pages, 1.5, title Long, text"},
    Sample{"long-linear.pdf", "120 pages, 1.4, title Long, text"},
    Sample{"long-locked.pdf", "0 pages, 1.7, encrypted"},
    Sample{"long-open.pdf", "120 pages, 1.7, title Long, encrypted, text"},
    Sample{"long-streams.pdf", "120 pages, 1.5, title Long, text"},
    Sample{"long-tree-streams.pdf", "120 pages, 1.5, text"},
    Sample{"long-tree.pdf", "120 pages, 1.4, text"},
    Sample{"long-without-font.pdf", "120 pages, 1.4, no text"},
    Sample{"long-wrong-count.pdf", "120 pages, 1.4, text"},
    Sample{"long.pdf", "120 pages, 1.4, title Long, text"},
    Sample{"next-line.pdf", "1 page, 1.4, text"},
    Sample{"no-characters.pdf", "1 page, 1.4, no text"},
    Sample{"no-dictionary.pdf", "1 page, 1.4, text"},
    Sample{"no-font.pdf", "1 page, 1.4, no text"},
    Sample{"no-page.pdf", "0 pages, 1.4"},
    Sample{"no-root.pdf", "0 pages, 1.4"},
    Sample{"no-startxref.pdf", "2 pages, 1.4, title Whole, text"},
    Sample{"no-trailer.pdf", "no document"},
    Sample{"no-version.pdf", "1 page, 0.0, text"},
    Sample{"object-streams.pdf", "1 page, 1.5, title T, author A, creator C, text"},
    Sample{"open-aes-128.pdf", "1 page, 1.6, title T, author A, creator C, encrypted, text"},
    Sample{"open-aes-256.pdf", "1 page, 1.7, title T, author A, creator C, encrypted, text"},
    Sample{"open-damaged.pdf", "1 page, 1.7, title T, author A, creator C, encrypted, text"},
    Sample{"open-rc4-128.pdf", "1 page, 1.4, title T, author A, creator C, encrypted, text"},
    Sample{"open-rc4-40.pdf", "1 page, 1.4, title T, author A, creator C, encrypted, text"},
    Sample{"other-handler.pdf", "0 pages, 1.4, encrypted"},
    Sample{"outside.pdf", "1 page, 1.4, text"},
    Sample{"packed.pdf", "1 page, 1.4, text"},
    Sample{"page-for-root.pdf", "1 page, 1.4, no text"},
    Sample{"parts.pdf", "1 page, 1.4, text"},
    Sample{"plain.pdf", "1 page, 1.4, text"},
    Sample{"scan.pdf", "2 pages, 1.4, no text"},
    Sample{"shift-jis-in-form.pdf", "1 page, 1.4, text"},
    Sample{"shift-jis-letter.pdf", "1 page, 1.4, text"},
    Sample{"shift-jis.pdf", "1 page, 1.4, text"},
    Sample{"space.pdf", "1 page, 1.4, text"},
    Sample{"title-elsewhere.pdf", "0 pages, 1.4, title In an object"},
    Sample{"title-name.pdf", "1 page, 1.4, text"},
    Sample{"title-nul.pdf", "1 page, 1.4, title Title, text"},
    Sample{"title-pdfdoc.pdf", "1 page, 1.4, title — € ü ˆ, text"},
    Sample{"title-utf16-little.pdf", "1 page, 1.4, title Größe 😀, text"},
    Sample{"title-utf16.pdf", "1 page, 1.4, title Größe 😀, text"},
    Sample{"title-utf8.pdf", "1 page, 1.4, title Größe 😀, text"},
    Sample{"title.pdf", "1 page, 1.4, title A title, text"},
    Sample{"to-unicode.pdf", "1 page, 1.4, text"},
    Sample{"tree-with-loop.pdf", "3 pages, 1.4, no text"},
    Sample{"tree.pdf", "3 pages, 1.4, no text"},
    Sample{"unicode-cmap.pdf", "1 page, 1.4, text"},
    Sample{"updated.pdf", "1 page, 1.4, title New, text"},
    Sample{"version-1.0.pdf", "1 page, 1.0, text"},
    Sample{"version-1.7.pdf", "1 page, 1.7, text"},
    Sample{"version-2.0.pdf", "1 page, 2.0, text"},
    Sample{"wrong-offsets.pdf", "2 pages, 1.4, title Whole, text"},
    Sample{"wrong-startxref.pdf", "2 pages, 1.4, title Whole, text"},
};

std::string descriptionOf(const std::optional<PDFDocumentProperties>& document) {
    if (!document) {
        return "no document";
    }
    const auto version = document->version.value_or(PDFDocumentProperties::Version{-1, -1});
    std::string text =
        platform::format("{} {}, {}.{}", document->pageCount,
                         document->pageCount == 1 ? "page" : "pages", version.major, version.minor);
    const auto add = [&text](const char* name, const std::optional<std::string>& value) {
        text += value ? platform::format(", {} {}", name, *value) : "";
    };
    add("title", document->title);
    add("author", document->author);
    add("creator", document->creator);
    text += document->isEncrypted ? ", encrypted" : "";
    text += !document->hasText ? "" : *document->hasText ? ", text" : ", no text";
    return text;
}

std::optional<PDFDocumentProperties> readBytes(std::string_view bytes, bool wantsText = true) {
    platform::pdf::preparePDFReader();
    return readPDF(MemoryFile(bytes).descriptor(), wantsText);
}

// A document of these objects, the first of which is its catalog, without a table of them.
std::string documentOf(const std::vector<std::string>& objects) {
    std::string text("%PDF-1.4\n");
    for (std::size_t number = 1; number <= objects.size(); ++number) {
        text += platform::format("{} 0 obj\n", number);
        text.append(objects[number - 1]).append("\nendobj\n");
    }
    return text.append("trailer\n<</Root 1 0 R>>\n");
}

std::string streamOf(const std::string& data, const std::string& entries = {}) {
    std::string text = platform::format("<</Length {}", data.size());
    return text.append(entries).append(">>stream\n").append(data).append("\nendstream");
}

std::string repeated(std::string_view part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += part;
    }
    return text;
}

const std::string catalog("<</Type/Catalog/Pages 2 0 R>>");
const std::string onePage("<</Type/Pages/Count 1/Kids[3 0 R]>>");

TEST(PDFReader, TellsOfEachSampleWhatIsInIt) {
    for (const Sample& sample : samples) {
        EXPECT_EQ(descriptionOf(pdf_samples::read(sample.name)), sample.description) << sample.name;
    }
}

TEST(PDFReader, HasAnExpectationForEachSample) {
    std::set<std::string> expected;
    for (const Sample& sample : samples) {
        expected.insert(sample.name);
    }
    EXPECT_EQ(pdf_samples::names(), expected);
    EXPECT_EQ(expected.size(), samples.size());
}

TEST(PDFReader, LooksForTextOnlyWhenAsked) {
    for (const Sample& sample : samples) {
        auto expected = pdf_samples::read(sample.name);
        if (expected) {
            EXPECT_EQ(expected->hasText.has_value(), expected->pageCount > 0) << sample.name;
            expected->hasText.reset();
        }
        EXPECT_EQ(pdf_samples::read(sample.name, false), expected) << sample.name;
    }
}

TEST(PDFReader, ReadsBytesOfNoPDFAsNone) {
    const std::string late = std::string(1024, 'x') + documentOf({catalog, onePage, "<<>>"});
    for (const std::string_view bytes :
         {std::string_view(), std::string_view("%PDF"), std::string_view("%PDF-1.4\n"),
          std::string_view("text"), std::string_view("\x89PNG\r\n\x1A\n"),
          std::string_view(late)}) {
        EXPECT_EQ(readBytes(bytes), std::nullopt) << bytes.substr(0, 10);
    }
    EXPECT_EQ(descriptionOf(readBytes(std::string_view(late).substr(10))), "1 page, 1.4, no text");
}

TEST(PDFReader, ReadsNothingButRegularFiles) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const platform::Descriptor reading(ends[0]);
    const platform::Descriptor writing(ends[1]);
    EXPECT_EQ(readPDF(reading.number(), true), std::nullopt);
    EXPECT_EQ(readPDF(-1, true), std::nullopt);
}

TEST(PDFReader, LeavesTheDescriptorOpen) {
    const MemoryFile file(documentOf({catalog, onePage, "<<>>"}));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(descriptionOf(readPDF(file.descriptor(), true)), "1 page, 1.4, no text");
    }
}

TEST(PDFReader, SurvivesFilesThatAreCutOff) {
    for (const char* name : {"gs.pdf", "open-aes-256.pdf", "linear-streams.pdf", "plain.pdf"}) {
        std::ifstream file(pdf_samples::pathOf(name), std::ios::binary);
        const std::string whole(std::istreambuf_iterator<char>(file), {});
        ASSERT_FALSE(whole.empty());
        for (std::size_t size = 0; size < whole.size(); size += 31) {
            const auto found = readBytes(std::string_view(whole).substr(0, size));
            EXPECT_LE(found ? found->pageCount : 0, 2U) << name << size;
        }
    }
}

TEST(PDFReader, GivesUpOnPagesThatNeverEnd) {
    std::vector<std::string> objects{catalog, onePage};
    objects.emplace_back("<</Type/Page/Contents 4 0 R/Resources 5 0 R>>");
    objects.emplace_back(streamOf(repeated("/X6 Do ", 20)));
    objects.emplace_back("<</XObject<</X6 6 0 R/X7 7 0 R/X8 8 0 R/X9 9 0 R/X10 10 0 R/X11 11 0 R"
                         "/X12 12 0 R>>>>");
    for (int number = 7; number <= 12; ++number) {
        objects.emplace_back(streamOf(repeated(platform::format("/X{} Do ", number), 20),
                                      "/Type/XObject/Subtype/Form/BBox[0 0 9 9]"));
    }
    objects.emplace_back(
        streamOf(repeated("0 0 m 9 9 l S ", 1000), "/Type/XObject/Subtype/Form/BBox[0 0 9 9]"));
    EXPECT_EQ(descriptionOf(readBytes(documentOf(objects))), "1 page, 1.4");
}

TEST(PDFReader, ReadsTreesThatAreTooDeepAsFarAsItCan) {
    std::vector<std::string> objects{catalog};
    for (int number = 3; number < 3000; ++number) {
        objects.push_back(platform::format("<</Type/Pages/Count 7/Kids[{} 0 R]>>", number));
    }
    objects.emplace_back("<</Type/Page>>");
    const auto document = readBytes(documentOf(objects));
    ASSERT_TRUE(document);
    EXPECT_LE(document->pageCount, 7U);
}

TEST(PDFReader, TakesNoPageForManyWithoutEnd) {
    const std::string kids = repeated("2 0 R ", 1000);
    const auto document =
        readBytes(documentOf({catalog, "<</Type/Pages/Count 2147483647/Kids[" + kids + "]>>"}));
    ASSERT_TRUE(document);
    EXPECT_EQ(document->pageCount, 0U);
}

TEST(PDFReader, SurvivesValuesWithinValues) {
    const std::string arrays = repeated("[", 100'000);
    const std::string dictionaries = repeated("<</a", 100'000);
    EXPECT_TRUE(readBytes(documentOf({catalog, onePage, "<</Type/Page>>", arrays, dictionaries})));
    readBytes(documentOf({catalog, onePage, "<</Type/Page/Contents 4 0 R>>", streamOf(arrays)}));
    readBytes(documentOf({arrays}));
    readBytes(documentOf({dictionaries}));
}

} // namespace
