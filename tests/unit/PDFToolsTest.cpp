// SPDX-License-Identifier: Apache-2.0
// Compares what is read of PDFs with what other programs tell of the same files.
#include "platform/Format.h"
#include "tests/unit/support/PDFSamples.h"
#include "tests/unit/support/ShellCommand.h"

#include <sstream>

#include <gtest/gtest.h>

namespace {

using platform::PDFDocumentProperties;

std::string withoutBlanksAtTheEnds(const std::string& text) {
    const auto start = text.find_first_not_of(' ');
    return start == std::string::npos ? ""
                                      : text.substr(start, text.find_last_not_of(' ') + 1 - start);
}

// The lines "name: value" for these names; empty when the program says nothing of the file.
std::string linesOfPdfinfo(const std::string& name) {
    std::istringstream lines(
        outputOfShell("pdfinfo -enc UTF-8 '" + pdf_samples::pathOf(name) + "' || :"));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        const auto colon = line.find(':');
        const std::string key = line.substr(0, colon);
        for (const char* wanted :
             {"Title", "Author", "Creator", "Pages", "Encrypted", "PDF version"}) {
            if (key == wanted) {
                const std::string value = withoutBlanksAtTheEnds(line.substr(colon + 1));
                text += platform::format("{}={}\n", key,
                                         key == "Encrypted" ? value.substr(0, 2) : value);
            }
        }
    }
    return text;
}

// The same of what is read here, in pdfinfo's order.
std::string linesOf(const PDFDocumentProperties& document) {
    std::string text;
    const auto add = [&text](const char* name, const std::optional<std::string>& value) {
        text += value ? platform::format("{}={}\n", name, withoutBlanksAtTheEnds(*value)) : "";
    };
    add("Title", document.title);
    add("Author", document.author);
    add("Creator", document.creator);
    text += platform::format("Pages={}\n", document.pageCount);
    text += document.isEncrypted ? "Encrypted=ye\n" : "Encrypted=no\n";
    text +=
        platform::format("PDF version={}.{}\n", document.version->major, document.version->minor);
    return text;
}

// Where other programs take what the root of the pages says, however wrong.
bool hasWrongCount(const std::string& name) {
    return name.starts_with("count-") || name == "tree-with-loop.pdf" ||
           name == "page-for-root.pdf" || name == "long-wrong-count.pdf";
}

// Where pdfinfo knows less: UTF-8, line ends and NULs in texts, the information of a document whose
// table of objects had to be made anew.
bool differsFromPdfinfo(const std::string& name) {
    return hasWrongCount(name) || name == "escaped-title.pdf" || name == "title-nul.pdf" ||
           name == "title-utf8.pdf" || name == "wrong-offsets.pdf";
}

TEST(PDFTools, PdfinfoAgreesOnAllThatItReads) {
    int compared = 0;
    for (const std::string& name : pdf_samples::names()) {
        const std::string expected = linesOfPdfinfo(name);
        const auto found = pdf_samples::read(name, false);
        if (expected.empty()) {
            EXPECT_TRUE(!found || found->pageCount == 0 || hasWrongCount(name)) << name;
        } else if (!differsFromPdfinfo(name)) {
            ASSERT_TRUE(found) << name;
            EXPECT_EQ(linesOf(*found), expected) << name;
            ++compared;
        }
    }
    EXPECT_GE(compared, 55);
}

TEST(PDFTools, QpdfAgreesOnTheNumberOfPages) {
    int compared = 0;
    for (const std::string& name : pdf_samples::names()) {
        const std::string counted = outputOfShell(
            "qpdf --show-npages '" + pdf_samples::pathOf(name) + "' || [ $? = 3 ] || echo -");
        const auto found = pdf_samples::read(name, false);
        if (counted.find('-') == std::string::npos && !hasWrongCount(name)) {
            ASSERT_TRUE(found) << name;
            EXPECT_EQ(platform::format("{}\n", found->pageCount), counted) << name;
            ++compared;
        }
    }
    EXPECT_GE(compared, 55);
}

TEST(PDFTools, QpdfAgreesOnEncryption) {
    for (const std::string& name : pdf_samples::names()) {
        const std::string answer =
            outputOfShell("qpdf --is-encrypted '" + pdf_samples::pathOf(name) + "'; echo $?");
        const auto found = pdf_samples::read(name, false);
        if (found && name != "other-handler.pdf") {
            EXPECT_EQ(answer, found->isEncrypted ? "0\n" : "2\n") << name;
        }
    }
}

} // namespace
