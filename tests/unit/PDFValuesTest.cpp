// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/Values.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using platform::pdf::countOfReferences;
using platform::pdf::Dictionary;
using platform::pdf::integerOf;
using platform::pdf::Reference;
using platform::pdf::referenceOf;
using platform::pdf::takeValue;
using platform::pdf::ValueReader;

// The first value and, behind a bar, what is left; "none" when it cannot be told.
std::string taken(std::string_view text) {
    const auto value = takeValue(text);
    return value ? std::string(*value).append("|").append(text) : "none";
}

TEST(PDFValues, AreTakenOneByOne) {
    EXPECT_EQ(taken(" % note\n12 /Next"), "12| /Next");
    EXPECT_EQ(taken("12 0 R 5"), "12 0 R| 5");
    EXPECT_EQ(taken("12 0 Ra"), "none"); // may go on
    EXPECT_EQ(taken("12 0 Ra "), "12| 0 Ra ");
    EXPECT_EQ(taken("12 0 obj "), "12| 0 obj ");
    EXPECT_EQ(taken("-1.5 x"), "-1.5| x");
    EXPECT_EQ(taken("/Name/Other"), "/Name|/Other");
    EXPECT_EQ(taken("(a(b)\\)c) "), "(a(b)\\)c)| ");
    EXPECT_EQ(taken("<0A >>"), "<0A >|>");
    EXPECT_EQ(taken("[1 0 R\n2 0 R]x"), "[1 0 R\n2 0 R]|x");
    EXPECT_EQ(taken("[(])[<<>>]]x"), "[(])[<<>>]]|x");
    EXPECT_EQ(taken("<</A 1/B<</C[2]>>>>stream"), "<</A 1/B<</C[2]>>>>|stream");
}

TEST(PDFValues, ThatDoNotEndOrDoNotFitAreNone) {
    for (const char* text : {"",     " ",   "12",   "12 0",     "12 0 R",  "/Name", "(a",
                             "(a\\", "<0A", "[1 2", "[1 0 R 2", "<</A 1>", "[1>>",  "<<]",
                             "]",    ">>",  ">",    ")",        "{1}",     "% note"}) {
        EXPECT_EQ(taken(text), "none") << text;
    }
    EXPECT_EQ(taken(std::string(32, '[') + std::string(32, ']')),
              std::string(32, '[') + std::string(32, ']') + "|");
    EXPECT_EQ(taken(std::string(33, '[') + std::string(33, ']')), "none");
}

TEST(PDFValues, AreNumbersOrReferences) {
    EXPECT_EQ(integerOf("0017"), 17U);
    EXPECT_EQ(integerOf("999999999999999999"), 999'999'999'999'999'999U);
    for (const char* value : {"", "-1", "+1", "1.0", "1 ", "x", "1000000000000000000", "/1"}) {
        EXPECT_EQ(integerOf(value), std::nullopt) << value;
    }
    EXPECT_EQ(referenceOf("12 3 R"), (Reference{12, 3}));
    EXPECT_EQ(referenceOf("12\n%x\n3 R"), (Reference{12, 3}));
    for (const char* value : {"", "R", "12", "12 R", "12 3", "2147483648 0 R", "/R", "(1 0 R"}) {
        EXPECT_EQ(referenceOf(value), std::nullopt) << value;
    }
}

TEST(PDFValues, ListsOfReferencesAreCounted) {
    EXPECT_EQ(countOfReferences("[]"), 0U);
    EXPECT_EQ(countOfReferences("[ ]"), 0U);
    EXPECT_EQ(countOfReferences("[1 0 R]"), 1U);
    EXPECT_EQ(countOfReferences("[\n1 0 R\r\n22 0 R\t999999999 0 R ]"), 3U);
    for (const char* value :
         {"", "[", "<<>>", "[1]", "[1 0]", "[1 0 R 2]", "[1 0 R2 0 R]", "[1 1 R]", "[1  0 R]",
          "[1 2 0 R]", "[R]", "[ 0 R]", "[1 0 R R]", "[1000000000 0 R]", "[1 0 R/A]", "[null]"}) {
        EXPECT_EQ(countOfReferences(value), std::nullopt) << value;
    }
}

TEST(PDFValues, AreFoundInDictionaries) {
    const auto dictionary = Dictionary::of("<</A 1/B 2 0 R /C[3]/D<</A 4>>>>");
    ASSERT_TRUE(dictionary);
    EXPECT_EQ((*dictionary)["/A"], "1");
    EXPECT_EQ((*dictionary)["/B"], "2 0 R");
    EXPECT_EQ((*dictionary)["/D"], "<</A 4>>");
    EXPECT_EQ((*dictionary)["/E"], "");
    EXPECT_EQ(dictionary->entries().size(), 4U);
    for (const char* value : {"", "[1]", "<</A>>", "<</A 1/A 2>>", "<</#41 1>>", "<<1 2>>"}) {
        EXPECT_FALSE(Dictionary::of(value)) << value;
    }
}

TEST(PDFValues, AreReadFromArrays) {
    ValueReader reader("[1 2 0 R(x)[3]]");
    for (const char* expected : {"1", "2 0 R", "(x)", "[3]"}) {
        EXPECT_EQ(reader.next(), expected);
    }
    EXPECT_EQ(reader.next(), std::nullopt);
    EXPECT_EQ(ValueReader("12").next(), std::nullopt);
}

} // namespace
