// SPDX-License-Identifier: Apache-2.0
#include "platform/PathString.h"

#include "tests/unit/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace PathString = platform::PathString;

struct Parts {
    std::string path;
    std::string last;
    std::string extension;
    std::string withoutExtension;
};

const std::vector<Parts> allParts{
    {"", "", "", ""},
    {"/", "/", "", "/"},
    {"//", "/", "", "/"},
    {"a", "a", "", "a"},
    {"a/", "a", "", "a"},
    {"a//", "a", "", "a"},
    {"a//b", "b", "", "a/b"},
    {"/a/b/", "b", "", "/a/b"},
    {"x.txt", "x.txt", "txt", "x"},
    {"x.tar.gz", "x.tar.gz", "gz", "x.tar"},
    {"x.bundle/", "x.bundle", "bundle", "x"},
    {".bashrc", ".bashrc", "", ".bashrc"},
    {".scratch.tiff", ".scratch.tiff", "tiff", ".scratch"},
    {"a.", "a.", "", "a."},
    {".zip.", ".zip.", "", ".zip."},
    {".", ".", "", "."},
    {"..", "..", "", ".."},
    {"...", "...", "", "..."},
    {"..zip", "..zip", "", "..zip"},
    {"...zip", "...zip", "", "...zip"},
    {"....txt", "....txt", "txt", "..."},
    {"..name.txt", "..name.txt", "txt", "..name"},
    {"scratch..tiff", "scratch..tiff", "tiff", "scratch."},
    {"a.b/c", "c", "", "a.b/c"},
    {"report.final draft", "report.final draft", "", "report.final draft"},
    {"/./..//./..//", "..", "", "/./.././.."},
    {"NOTES.TXT", "NOTES.TXT", "TXT", "NOTES"},
    {"x.\xE2\x80\x8Etxt", "x.\xE2\x80\x8Etxt", "", "x.\xE2\x80\x8Etxt"},
    {"x.\xE2\x80\x8Ft", "x.\xE2\x80\x8Ft", "", "x.\xE2\x80\x8Ft"},
    {"x.\xE2\x80\xAAt", "x.\xE2\x80\xAAt", "", "x.\xE2\x80\xAAt"},
    {"x.\xE2\x80\xAEt", "x.\xE2\x80\xAEt", "", "x.\xE2\x80\xAEt"},
    {"x.\xE2\x81\xA6t", "x.\xE2\x81\xA6t", "", "x.\xE2\x81\xA6t"},
    {"x.\xE2\x81\xA9t", "x.\xE2\x81\xA9t", "", "x.\xE2\x81\xA9t"},
    {"x.\xD8\x9Ct", "x.\xD8\x9Ct", "", "x.\xD8\x9Ct"},
    {"x.\xE2\x80\x90t", "x.\xE2\x80\x90t", "\xE2\x80\x90t", "x"},
    {"caf\xE9.\xFFx", "caf\xE9.\xFFx", "\xFFx", "caf\xE9"},
    {"x.\xE2\x80", "x.\xE2\x80", "\xE2\x80", "x"},
};

TEST(PathString, ComponentsAreToldByText) {
    for (const Parts& parts : allParts) {
        SCOPED_TRACE(parts.path);
        EXPECT_EQ(PathString::lastPathComponent(parts.path), parts.last);
        EXPECT_EQ(PathString::pathExtension(parts.path), parts.extension);
        EXPECT_EQ(PathString::deletingPathExtension(parts.path), parts.withoutExtension);
    }
}

TEST(PathString, AppendingJoinsByOneSlash) {
    EXPECT_EQ(PathString::appendingPathComponent("/tmp", "x"), "/tmp/x");
    EXPECT_EQ(PathString::appendingPathComponent("/tmp/", "x"), "/tmp/x");
    EXPECT_EQ(PathString::appendingPathComponent("/", "x"), "/x");
    EXPECT_EQ(PathString::appendingPathComponent("", "x"), "x");
    EXPECT_EQ(PathString::appendingPathComponent("/tmp", "/x/"), "/tmp/x");
    EXPECT_EQ(PathString::appendingPathComponent("/tmp", "a//b/"), "/tmp/a/b");
    EXPECT_EQ(PathString::appendingPathComponent("/tmp", ""), "/tmp");
    EXPECT_EQ(PathString::appendingPathComponent("/tmp", "~/x"), "/tmp/~/x");
    EXPECT_EQ(PathString::appendingPathComponent("/tmp", "../x"), "/tmp/../x");
}

TEST(PathString, StandardizingRemovesDotsByTextWhereNothingExists) {
    EXPECT_EQ(PathString::standardizing("/nonexistent/a/./b/../c"), "/nonexistent/a/c");
    EXPECT_EQ(PathString::standardizing("/nonexistent/../../x"), "/x");
    EXPECT_EQ(PathString::standardizing("/nonexistent//a///b/"), "/nonexistent/a/b");
    EXPECT_EQ(PathString::standardizing("/../nonexistent"), "/nonexistent");
    EXPECT_EQ(PathString::standardizing("/"), "/");
    EXPECT_EQ(PathString::standardizing("//"), "/");
    EXPECT_EQ(PathString::standardizing(""), "");
    EXPECT_EQ(PathString::standardizing("/nonexistent/."), "/nonexistent");
}

TEST(PathString, StandardizingKeepsParentsOfRelativePaths) {
    EXPECT_EQ(PathString::standardizing("../nonexistent"), "../nonexistent");
    EXPECT_EQ(PathString::standardizing("nonexistent/../../x"), "../x");
}

TEST(PathString, StandardizingResolvesParentsThroughLinksWhenAllExists) {
    const TemporaryFolder folder;
    ASSERT_NE(folder.folder("far/away").size(), 0U);
    const std::string file = folder.file("far/file");
    const std::string link = folder.link("near", "far/away");
    EXPECT_EQ(PathString::standardizing(link + "/../file"), file);
    // By text this would be the file beside the link, which does not exist.
    EXPECT_EQ(PathString::standardizing(link + "/../missing"), folder.path("missing"));
}

TEST(PathString, StandardizingWithoutParentsResolvesNoLink) {
    const TemporaryFolder folder;
    const std::string link = folder.link("link", "/");
    EXPECT_EQ(PathString::standardizing(folder.path() + "/./link"), link);
}

TEST(PathString, StandardizingResolvesTheLastLinkAsWell) {
    const TemporaryFolder folder;
    ASSERT_NE(folder.folder("sub").size(), 0U);
    const std::string file = folder.file("file");
    ASSERT_NE(folder.link("link", "file").size(), 0U);
    EXPECT_EQ(PathString::standardizing(folder.path("sub/../link")), file);
}

TEST(PathString, StandardizingExpandsALeadingTildeOnly) {
    EXPECT_EQ(PathString::standardizing("~"), "/nonexistent");
    EXPECT_EQ(PathString::standardizing("~/x"), "/nonexistent/x");
    EXPECT_EQ(PathString::standardizing("/a/~/x"), "/a/~/x");
    EXPECT_EQ(PathString::standardizing("~root/x"), "/root/x");
    EXPECT_EQ(PathString::standardizing("~no-such-user/x"), "~no-such-user/x");
}

TEST(PathString, AbbreviatesTheHomeDirectoryAndWhatIsInIt) {
    EXPECT_EQ(PathString::abbreviatingWithTilde("/nonexistent"), "~");
    EXPECT_EQ(PathString::abbreviatingWithTilde("/nonexistent/a/../b"), "~/a/../b");
    EXPECT_EQ(PathString::abbreviatingWithTilde("/nonexistent2"), "/nonexistent2");
    EXPECT_EQ(PathString::abbreviatingWithTilde("/"), "/");
    EXPECT_EQ(PathString::abbreviatingWithTilde(""), "");
    EXPECT_EQ(PathString::abbreviatingWithTilde("/x/nonexistent"), "/x/nonexistent");
}

} // namespace
