// SPDX-License-Identifier: Apache-2.0
// What excerpts of PDFs tell, compared with the documents as wholes.
#include "platform/linux/pdf/Excerpt.h"
#include "tests/unit/support/MemoryFile.h"
#include "tests/unit/support/PDFSamples.h"

#include <array>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

namespace {

using platform::pdf::readExcerptOfPDF;
using platform::pdf::readWholePDF;

using Answer = std::optional<platform::PDFDocumentProperties>;

// Of documents however short.
Answer excerptOf(const MemoryFile& file, bool wantsText = true) {
    return readExcerptOfPDF(file.descriptor(), wantsText, 0);
}

std::string contentsOf(const std::string& name) {
    platform::pdf::preparePDFReader();
    std::ifstream file(pdf_samples::pathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Bytes that this thread has read from files so far.
std::uint64_t bytesRead() {
    std::ifstream file("/proc/thread-self/io");
    std::string name;
    std::uint64_t count = 0;
    file >> name >> count;
    return count;
}

// What is damaged, encrypted in streams or otherwise unusual.
const std::set<std::string> withoutExcerpt{
    "count-far-too-high.pdf", "count-missing.pdf",  "count-negative.pdf", "count-text.pdf",
    "count-too-high.pdf",     "count-too-low.pdf",  "cut-off.pdf",        "late-header.pdf",
    "line-ends.pdf",          "locked-damaged.pdf", "locked-streams.pdf", "long-without-font.pdf",
    "long-wrong-count.pdf",   "no-page.pdf",        "no-root.pdf",        "no-startxref.pdf",
    "no-trailer.pdf",         "open-damaged.pdf",   "packed.pdf",         "parts.pdf",
    "title-elsewhere.pdf",    "tree-with-loop.pdf", "wrong-offsets.pdf",  "wrong-startxref.pdf"};

TEST(PDFExcerpt, TellsTheSameAsTheWholeOfEachSample) {
    for (const std::string& name : pdf_samples::names()) {
        const MemoryFile file(contentsOf(name));
        for (const bool wantsText : {true, false}) {
            const Answer whole = readWholePDF(file.descriptor(), wantsText);
            const Answer excerpt = excerptOf(file, wantsText);
            EXPECT_EQ(excerpt, withoutExcerpt.contains(name) && !excerpt ? Answer() : whole)
                << name;
        }
        EXPECT_EQ(excerptOf(file).has_value(), !withoutExcerpt.contains(name)) << name;
    }
}

TEST(PDFExcerpt, ReadsAboutAsMuchHoweverLongADocumentIs) {
    const MemoryFile file(contentsOf("five-thousand.pdf"));
    ASSERT_TRUE(excerptOf(file));
    const std::uint64_t start = bytesRead();
    ASSERT_TRUE(excerptOf(file));
    const std::uint64_t middle = bytesRead();
    ASSERT_TRUE(readWholePDF(file.descriptor(), true));
    const std::uint64_t end = bytesRead();
    // Most of it is the list of all pages, of 45 KiB, which is read in steps.
    EXPECT_LT(middle - start, 160'000U);
    EXPECT_GT(end - middle, 240'000U);
}

TEST(PDFExcerpt, IsNotMadeOfShortDocuments) {
    const MemoryFile shortOne(contentsOf("plain.pdf"));
    EXPECT_TRUE(excerptOf(shortOne));
    EXPECT_FALSE(readExcerptOfPDF(shortOne.descriptor(), true));
    const MemoryFile longOne(contentsOf("long.pdf"));
    EXPECT_TRUE(readExcerptOfPDF(longOne.descriptor(), true));
}

TEST(PDFExcerpt, KeepsTheNumberOfChildrenThatItDoesNotShow) {
    const std::string contents = contentsOf("long.pdf");
    const MemoryFile file(contents);
    const auto excerpt = platform::pdf::excerptOf(file.descriptor(), contents.size(), true, 0);
    ASSERT_TRUE(excerpt);
    EXPECT_EQ(excerpt->numberOfChildren, 120U);
    EXPECT_EQ(excerpt->numberOfObjects, 245U);
    EXPECT_NE(excerpt->update.find("/Kids[3 0 R]/Count 120"), std::string::npos);
    EXPECT_LT(excerpt->update.size(), 1000U);
}

/// Changes a few bytes of a document at random, always the same ones.
class Damage {
public:
    std::string doneTo(std::string bytes) {
        constexpr std::string_view likely = "0123456789 R/<>[]()%\n";
        const std::size_t place = below(bytes.size());
        const std::size_t size = 1 + below(20);
        switch (below(4)) {
        case 0: bytes[place] = static_cast<char>(below(256)); break;
        case 1: bytes[place] = likely[below(likely.size())]; break;
        case 2: bytes.erase(place, size); break;
        default: bytes.insert(place, bytes.substr(below(bytes.size()), size)); break;
        }
        return bytes;
    }

private:
    std::size_t below(std::size_t end) { return m_random() % end; }

    std::mt19937 m_random{2022};
};

// Where an excerpt leaves out what is damaged, which are entries of other objects in the table and
// what comes first in documents for the web, it tells what an undamaged document does. The whole of
// that may be no document any more. Anything else has to be the same.
TEST(PDFExcerpt, TellsTheSameOfDamagedDocumentsOrWhatWasThereBefore) {
    int compared = 0;
    int asBefore = 0;
    Damage damage;
    for (const std::string& name : pdf_samples::names()) {
        const std::string contents = contentsOf(name);
        const bool isHuge = contents.size() > 100'000;
        const int rounds = isHuge ? 0 : name.starts_with("long") ? 60 : 20;
        const Answer undamaged = readWholePDF(MemoryFile(contents).descriptor(), true);
        for (int round = 0; round < rounds; ++round) {
            const MemoryFile file(damage.doneTo(contents));
            const Answer excerpt = excerptOf(file);
            const Answer whole = excerpt ? readWholePDF(file.descriptor(), true) : Answer();
            const bool isAsBefore = excerpt == undamaged && excerpt != whole;
            EXPECT_TRUE(excerpt == whole || isAsBefore) << name << ' ' << round;
            compared += excerpt ? 1 : 0;
            asBefore += isAsBefore ? 1 : 0;
        }
    }
    EXPECT_GT(compared, 500);
    EXPECT_LT(asBefore, compared / 50);
}

} // namespace
