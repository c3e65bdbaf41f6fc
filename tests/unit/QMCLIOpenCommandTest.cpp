// SPDX-License-Identifier: Apache-2.0
#include "cli/commands/QMCLIOpenCommand.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Options = QMCLIOptions;
using Targets = std::vector<std::string>;

std::string script(const Targets& targets, const Options& options = {}) {
    return QMCLIOpenCommand().scriptForTargets(targets, options, "org.example.Files");
}

std::string scriptOfOne(const std::string& line) {
    return "tell application id \"org.example.Files\"\n"
           "  activate\n"
           "  tell front browser window\n" +
           line +
           "\n"
           "  end tell\n"
           "end tell\n";
}

std::string escaped(std::string_view text) {
    return QMCLIOpenCommand().escapeForAppleScript(text);
}

TEST(OpenScript, OfNoTargetActivatesOnly) {
    EXPECT_EQ(script({}), "tell application id \"org.example.Files\"\n  activate\nend tell\n");
    EXPECT_EQ(script({}, {{"b", "true"}}), "tell application id \"org.example.Files\"\nend tell\n");
}

TEST(OpenScript, OfOneLocalTargetNavigates) {
    EXPECT_EQ(script({"/tmp"}), scriptOfOne("    navigate to \"/tmp\" in active tab of left pane"));
}

TEST(OpenScript, ConnectsToThreeKindsOfServersOnly) {
    for (const std::string url : {"sftp://h/x", "ftp://h", "s3://", "sftp://"}) {
        EXPECT_EQ(script({url}),
                  scriptOfOne("    connect to \"" + url + "\" in active tab of left pane"));
    }
    for (const std::string url :
         {"smb://h/x", "webdav://h", "SFTP://h", "/sftp://h", "sftp:/h", "https://h", ""}) {
        EXPECT_EQ(script({url}),
                  scriptOfOne("    navigate to \"" + url + "\" in active tab of left pane"));
    }
}

TEST(OpenScript, UsesTheRightPaneForThatWordAlone) {
    EXPECT_EQ(script({"/a"}, {{"p", "right"}}),
              scriptOfOne("    navigate to \"/a\" in active tab of right pane"));
    EXPECT_EQ(script({"ftp://h"}, {{"p", "right"}}),
              scriptOfOne("    connect to \"ftp://h\" in active tab of right pane"));
    for (const char* const pane : {"left", "middle", "true", "", "RIGHT", "right "}) {
        EXPECT_EQ(script({"/a"}, {{"p", pane}}),
                  scriptOfOne("    navigate to \"/a\" in active tab of left pane"));
    }
}

TEST(OpenScript, OfTwoTargetsNavigatesBothPanes) {
    const std::string expected = "tell application id \"org.example.Files\"\n"
                                 "  activate\n"
                                 "  tell front browser window\n"
                                 "    navigate to \"/a\" in active tab of left pane\n"
                                 "    navigate to \"sftp://h\" in active tab of right pane\n"
                                 "  end tell\n"
                                 "end tell\n";
    EXPECT_EQ(script({"/a", "sftp://h"}), expected);
    EXPECT_EQ(script({"/a", "sftp://h"}, {{"p", "right"}}), expected);
    EXPECT_EQ(script({"/a", "sftp://h", "/c", "s3://d"}), expected);
}

TEST(OpenScript, LeavesActivationOutInTheBackground) {
    EXPECT_EQ(script({"/a", "/b"}, {{"b", "true"}}),
              "tell application id \"org.example.Files\"\n"
              "  tell front browser window\n"
              "    navigate to \"/a\" in active tab of left pane\n"
              "    navigate to \"/b\" in active tab of right pane\n"
              "  end tell\n"
              "end tell\n");
    EXPECT_EQ(script({"/a"}, {{"b", "yes"}}), script({"/a"}));
}

TEST(OpenScript, IgnoresOtherOptions) {
    EXPECT_EQ(script({"/a"}, {{"t", "true"}, {"w", "true"}, {"", "true"}, {"json", "true"}}),
              script({"/a"}));
}

TEST(OpenScript, EscapesTargets) {
    EXPECT_EQ(script({R"(/a"b\c)"}),
              scriptOfOne(R"(    navigate to "/a\"b\\c" in active tab of left pane)"));
    EXPECT_EQ(script({R"(s3://")", R"(\)"}),
              "tell application id \"org.example.Files\"\n"
              "  activate\n"
              "  tell front browser window\n"
              "    navigate to \"s3://\\\"\" in active tab of left pane\n"
              "    navigate to \"\\\\\" in active tab of right pane\n"
              "  end tell\n"
              "end tell\n");
}

TEST(EscapeForAppleScript, DoublesBackslashesAndEscapesQuotes) {
    EXPECT_EQ(escaped(""), "");
    EXPECT_EQ(escaped("plain"), "plain");
    EXPECT_EQ(escaped(R"(")"), R"(\")");
    EXPECT_EQ(escaped(R"(\)"), R"(\\)");
    EXPECT_EQ(escaped(R"(\")"), R"(\\\")");
    EXPECT_EQ(escaped(R"(a\"b"\\)"), R"(a\\\"b\"\\\\)");
}

TEST(EscapeForAppleScript, LeavesAllElse) {
    const std::string text = "'`$%{}\n\r\t\x01\x7F\xFF\xC3\xA9";
    EXPECT_EQ(escaped(text), text);
}

TEST(OpenTarget, KeepsUrlsOfKnownServers) {
    for (const std::string url :
         {"sftp://h/a/../b", "ftp://", "s3://x//y", "smb://h", "webdav://h/."}) {
        EXPECT_EQ(QMCLIOpenCommand::targetForArgument(url), url);
    }
}

TEST(OpenTarget, MakesAllElseAbsolute) {
    const std::string here = std::filesystem::current_path();
    const std::string below = here == "/" ? here : here + "/";
    EXPECT_EQ(QMCLIOpenCommand::targetForArgument("/a/../b"), "/a/../b");
    EXPECT_EQ(QMCLIOpenCommand::targetForArgument(""), here);
    EXPECT_EQ(QMCLIOpenCommand::targetForArgument("a/./b"), below + "a/b");
    EXPECT_EQ(QMCLIOpenCommand::targetForArgument("FTP://h"), below + "FTP:/h");
    EXPECT_EQ(QMCLIOpenCommand::targetForArgument("xsftp://h"), below + "xsftp:/h");
}

} // namespace
