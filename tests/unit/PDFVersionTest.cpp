// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/PDFVersion.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using platform::pdf::laterOf;
using platform::pdf::versionIn;
using platform::pdf::versionOfHeader;
using Version = platform::PDFDocumentProperties::Version;

TEST(PDFVersion, IsTwoNumbersWithAPointBetween) {
    EXPECT_EQ(versionIn("1.4"), (Version{1, 4}));
    EXPECT_EQ(versionIn("2.0\r\n"), (Version{2, 0}));
    EXPECT_EQ(versionIn("1.10x"), (Version{1, 10}));
}

TEST(PDFVersion, IsZeroWhereItCannotBeRead) {
    for (const char* text : {"", "1", "1.", ".4", "x", " 1.4", "-1.4", "1.-4", "1,4", "1.+4",
                             "99999999999.4", "1.99999999999"}) {
        EXPECT_EQ(versionIn(text), Version()) << text;
    }
}

TEST(PDFVersion, IsFoundWhereverTheHeaderLies) {
    EXPECT_EQ(versionOfHeader("%PDF-1.3\n%"), (Version{1, 3}));
    EXPECT_EQ(versionOfHeader("MZ..\n%PDF-1.3"), (Version{1, 3}));
    EXPECT_EQ(versionOfHeader("%PDF-%PDF-1.3"), Version());
    for (const char* text : {"", "%PDF", "%pdf-1.4", "PDF-1.4"}) {
        EXPECT_EQ(versionOfHeader(text), std::nullopt) << text;
    }
}

TEST(PDFVersion, IsLaterByItsFirstNumberFirst) {
    EXPECT_EQ(laterOf({1, 7}, {2, 0}), (Version{2, 0}));
    EXPECT_EQ(laterOf({2, 0}, {1, 7}), (Version{2, 0}));
    EXPECT_EQ(laterOf({1, 4}, {1, 10}), (Version{1, 10}));
    EXPECT_EQ(laterOf({1, 4}, {1, 4}), (Version{1, 4}));
}

} // namespace
