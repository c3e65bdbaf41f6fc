// SPDX-License-Identifier: Apache-2.0
#include "platform/FileURL.h"

#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace {

using platform::FileURL;

std::string pathOf(std::string_view text) {
    const auto url = FileURL::parse(text);
    return url ? url->path() : "(none)";
}

TEST(FileURL, KeepsThePathButForSlashesAtTheEnd) {
    EXPECT_EQ(FileURL::fromPath("/a/b").path(), "/a/b");
    EXPECT_EQ(FileURL::fromPath("/a/b//").path(), "/a/b");
    EXPECT_EQ(FileURL::fromPath("/").path(), "/");
    EXPECT_EQ(FileURL::fromPath("//").path(), "/");
    EXPECT_EQ(FileURL::fromPath("/a/../b/./c").path(), "/a/../b/./c");
}

TEST(FileURL, RelativePathsAreTakenFromTheCurrentFolder) {
    const TemporaryFolder folder;
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(FileURL::fromPath("a").path(), folder.path("a"));
    EXPECT_EQ(FileURL::fromPath("~/a").path(), folder.path("~/a"));
    std::filesystem::current_path("/");
}

TEST(FileURL, RelativePathsStayRelativeWhenTheCurrentFolderIsGone) {
    const TemporaryFolder folder;
    const std::string gone = folder.folder("gone");
    std::filesystem::current_path(gone);
    std::filesystem::remove(gone);
    EXPECT_EQ(FileURL::fromPath("../f").path(), "../f");
    EXPECT_EQ(FileURL::fromPath("").path(), ".");
    EXPECT_EQ(FileURL::fromPath("a b").absoluteString(), "file:a%20b");
    EXPECT_EQ(FileURL::fromPath("/a").path(), "/a");
    std::filesystem::current_path("/");
}

TEST(FileURL, TextIsPercentEncoded) {
    EXPECT_EQ(FileURL::fromPath("/a b%c#d?e").absoluteString(), "file:///a%20b%25c%23d%3Fe");
    EXPECT_EQ(FileURL::fromPath("/grün").absoluteString(), "file:///gr%C3%BCn");
    EXPECT_EQ(FileURL::fromPath("/\xFF\n").absoluteString(), "file:///%FF%0A");
    EXPECT_EQ(FileURL::fromPath("/").absoluteString(), "file:///");
}

TEST(FileURL, EveryByteOfAPathSurvives) {
    std::string path = "/";
    for (int byte = 1; byte < 256; ++byte) {
        path.push_back(static_cast<char>(byte));
    }
    path.append("x");
    const FileURL url = FileURL::fromPath(path);
    EXPECT_EQ(url.path(), path);
    EXPECT_EQ(FileURL::parse(url.absoluteString()), url);
}

TEST(FileURL, LocalURLsAreRead) {
    EXPECT_EQ(pathOf("file:///a/b"), "/a/b");
    EXPECT_EQ(pathOf("file://localhost/a"), "/a");
    EXPECT_EQ(pathOf("FILE:///a"), "/a");
    EXPECT_EQ(pathOf("file:/a"), "/a");
    EXPECT_EQ(pathOf("file:///a%20b/"), "/a b");
    EXPECT_EQ(pathOf("file:///"), "/");
    EXPECT_EQ(pathOf("file:///%c3%BC"), "/ü");
}

TEST(FileURL, OthersAreRefused) {
    for (const char* text : {"", "/a", "a", "http://host/a", "file:", "file:a", "file://host/a",
                             "filex:///a", "file://localhost.example/a"}) {
        EXPECT_EQ(pathOf(text), "(none)") << text;
    }
}

TEST(FileURL, DamagedEscapesAreRefused) {
    for (const char* text : {"file:///%", "file:///%4", "file:///%zz", "file:///a%2", "file:///%00",
                             "file:///a%2Fb"}) {
        EXPECT_EQ(pathOf(text), "(none)") << text;
    }
}

TEST(FileURL, LastComponentIsThatOfThePath) {
    EXPECT_EQ(FileURL::fromPath("/a/b.txt/").lastPathComponent(), "b.txt");
    EXPECT_EQ(FileURL::fromPath("/").lastPathComponent(), "/");
}

TEST(FileURL, SaysWhetherItIsThatOfAFolder) {
    const FileURL folder = FileURL::fromDirectoryPath("/a b/");
    EXPECT_TRUE(folder.hasDirectoryPath());
    EXPECT_EQ(folder.path(), "/a b");
    EXPECT_EQ(folder.absoluteString(), "file:///a%20b/");
    EXPECT_EQ(FileURL::parse("file:///a%20b/"), folder);
    EXPECT_EQ(FileURL::fromDirectoryPath("/").absoluteString(), "file:///");
    EXPECT_EQ(FileURL::fromPath("/"), FileURL::fromDirectoryPath("//"));
    EXPECT_EQ(FileURL::parse("file:///"), FileURL::fromPath("/"));
    EXPECT_FALSE(FileURL::fromPath("/a b/").hasDirectoryPath());
    EXPECT_NE(FileURL::fromPath("/a b"), folder);
}

} // namespace
