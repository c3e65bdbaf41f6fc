// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMString.h"

#include "foundation/QMDiskImageExtensions.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(QMString, TypesConformToThemselvesAndTheirAncestors) {
    EXPECT_TRUE(qm_utiConformsTo("public.png", "public.png"));
    EXPECT_TRUE(qm_utiConformsTo("public.png", "public.image"));
    EXPECT_TRUE(qm_utiConformsTo("public.zip-archive", "public.archive"));
    EXPECT_FALSE(qm_utiConformsTo("public.image", "public.png"));
}

TEST(QMString, EmptyAndUnknownTypesConformToNothing) {
    EXPECT_FALSE(qm_utiConformsTo("", "public.item"));
    EXPECT_FALSE(qm_utiConformsTo("public.png", ""));
    EXPECT_FALSE(qm_utiConformsTo("", ""));
    EXPECT_FALSE(qm_utiConformsTo("org.example.unheard-of", "org.example.unheard-of"));
    EXPECT_FALSE(qm_utiConformsTo("org.example.unheard-of", "public.item"));
}

TEST(QMString, SizesAreInDecimalUnits) {
    EXPECT_EQ(qm_humanReadableSize(0), "Zero KB");
    EXPECT_EQ(qm_humanReadableSize(1'500'000), "1.5 MB");
    EXPECT_EQ(qm_humanReadableSize(-1), "-1 byte");
}

TEST(QMString, ExtensionIsLowerCased) {
    EXPECT_EQ(qm_pathExtensionLowercased("/a/Photo.JPG"), "jpg");
    EXPECT_EQ(qm_pathExtensionLowercased("x.ÄÖ"), "äö");
    EXPECT_EQ(qm_pathExtensionLowercased("x.A\xFF"), "a\xFF");
    EXPECT_EQ(qm_pathExtensionLowercased("Makefile"), "");
    EXPECT_EQ(qm_pathExtensionLowercased(""), "");
}

TEST(QMString, OnlyTheLastComponentHidesAFile) {
    EXPECT_TRUE(qm_isHiddenFileName(".DS_Store"));
    EXPECT_TRUE(qm_isHiddenFileName("/a/.b/"));
    EXPECT_FALSE(qm_isHiddenFileName("/a/.b/c"));
    EXPECT_FALSE(qm_isHiddenFileName("a.b"));
    EXPECT_FALSE(qm_isHiddenFileName(""));
}

TEST(QMString, UniquePathIsThePlainOneWhileNothingIsThere) {
    const TemporaryFolder folder;
    EXPECT_EQ(qm_uniquePathInDirectory("new.txt", folder.path()), folder.path("new.txt"));
}

TEST(QMString, UniquePathCountsBeforeTheLastExtension) {
    const TemporaryFolder folder;
    for (const char* name : {"report.pdf", "report (2).pdf", "archive.tar.gz", "Notes", ".conf"}) {
        ASSERT_NE(folder.file(name), "");
    }
    EXPECT_EQ(qm_uniquePathInDirectory("report.pdf", folder.path()), folder.path("report (3).pdf"));
    EXPECT_EQ(qm_uniquePathInDirectory("archive.tar.gz", folder.path()),
              folder.path("archive.tar (2).gz"));
    EXPECT_EQ(qm_uniquePathInDirectory("Notes", folder.path()), folder.path("Notes (2)"));
    EXPECT_EQ(qm_uniquePathInDirectory(".conf", folder.path()), folder.path(".conf (2)"));
}

TEST(QMString, UniquePathTakesADanglingLinkForFree) {
    const TemporaryFolder folder;
    const std::string link = folder.link("link", "nowhere");
    EXPECT_EQ(qm_uniquePathInDirectory("link", folder.path()), link);
}

TEST(QMString, UniquePathEndsAt9999) {
    const TemporaryFolder folder;
    ASSERT_NE(folder.file("x.t"), "");
    for (int number = 2; number < 9999; ++number) {
        ASSERT_NE(folder.file("x (" + std::to_string(number) + ").t"), "");
    }
    EXPECT_EQ(qm_uniquePathInDirectory("x.t", folder.path()), folder.path("x (9999).t"));
    ASSERT_NE(folder.file("x (9999).t"), "");
    EXPECT_EQ(qm_uniquePathInDirectory("x.t", folder.path()), folder.path("x (9999).t"));
}

TEST(QMString, TextsAreJoinedInOrder) {
    EXPECT_EQ(qm_joined({}, ", "), "");
    EXPECT_EQ(qm_joined({"a"}, ", "), "a");
    EXPECT_EQ(qm_joined({"", "b", ""}, ", "), ", b, ");
}

TEST(QMString, HomeIsAbbreviated) {
    EXPECT_EQ(qm_abbreviatedPath("/nonexistent/Documents"), "~/Documents");
    EXPECT_EQ(qm_abbreviatedPath("/etc"), "/etc");
}

TEST(QMString, DiskImagesAreToldByTheLastExtension) {
    for (const char* name : {"a.dmg", "a.iso", "a.img", "a.sparseimage", "/nowhere/a.sparsebundle",
                             "a.cdr", "A.DMG"}) {
        EXPECT_TRUE(qm_hasMountableDiskImageExtension(name)) << name;
    }
    for (const char* name : {"", "a.dmg.zip", "dmg", ".dmg", "a.toast", "a.dmg "}) {
        EXPECT_FALSE(qm_hasMountableDiskImageExtension(name)) << name;
    }
}

} // namespace
