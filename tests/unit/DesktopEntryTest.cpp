// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/DesktopEntry.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::DesktopEntry;
using Words = std::vector<std::string>;

std::optional<DesktopEntry> entry(const std::string& lines) {
    return DesktopEntry::parse("[Desktop Entry]\nType=Application\n" + lines);
}

Words commandOf(const std::string& exec) {
    const auto parsed = entry("Exec=" + exec);
    return parsed ? parsed->command : Words{"no entry"};
}

TEST(DesktopEntry, ReadsWhatStartsAnApplication) {
    const DesktopEntry expected{true, {"files", "--new"}, "/opt/my files", "/opt/files"};
    EXPECT_EQ(entry("# a comment\n\n"
                    "Name=Files\nName[de]=Dateien\nExec[de]=dateien\n"
                    "DBusActivatable=true\n"
                    "Exec = files --new %U\t\n"
                    "Path=/opt/my\\sfiles\r\n"
                    "TryExec=/opt/files\n"
                    "[Desktop Action new]\nExec=other\n"),
              expected);
}

TEST(DesktopEntry, LacksNothingThatIsOptional) {
    EXPECT_EQ(entry(""), DesktopEntry());
    EXPECT_EQ(DesktopEntry::parse("[Desktop Entry]"), DesktopEntry());
    EXPECT_EQ(DesktopEntry::parse("[Desktop Entry]\nno line\n=x\nExec=a"),
              (DesktopEntry{false, {"a"}, "", ""}));
}

TEST(DesktopEntry, IsNoneForOtherTexts) {
    for (const std::string text :
         {"", "Exec=a", "[Other]\nExec=a", "# [Desktop Entry]\nExec=a", "[Desktop Entry\nExec=a",
          "[Desktop Entry]\nType=Link\nExec=a", "[Desktop Entry]\nHidden=true\nExec=a"}) {
        EXPECT_EQ(DesktopEntry::parse(text), std::nullopt) << text;
    }
    EXPECT_EQ(DesktopEntry::parse(std::string("[Desktop Entry]\nExec=a\0b", 24)), std::nullopt);
}

TEST(DesktopEntry, CountsTheLastOfEqualKeys) {
    EXPECT_EQ(entry("Exec=a\nExec=b")->command, Words{"b"});
    EXPECT_FALSE(entry("DBusActivatable=true\nDBusActivatable=false")->isBusActivatable);
    EXPECT_FALSE(entry("DBusActivatable=1")->isBusActivatable);
    EXPECT_EQ(entry("Exec=a\n[x]\nExec=b\n[Desktop Entry]\nPath=/p"),
              (DesktopEntry{false, {"a"}, "/p", ""}));
}

TEST(ExecLine, SplitsAtBlanks) {
    EXPECT_EQ(commandOf("a"), Words{"a"});
    EXPECT_EQ(commandOf("  a   -b\tc "), (Words{"a", "-b", "c"}));
    EXPECT_EQ(commandOf(""), Words{});
    EXPECT_EQ(commandOf("env A=b c"), (Words{"env", "A=b", "c"}));
}

TEST(ExecLine, KeepsQuotedTextTogether) {
    EXPECT_EQ(commandOf(R"("a b" "c")"), (Words{"a b", "c"}));
    EXPECT_EQ(commandOf(R"(a "")"), (Words{"a", ""}));
    EXPECT_EQ(commandOf(R"(--x="a b"c)"), Words{"--x=a bc"});
    EXPECT_EQ(commandOf(R"("a'b|;&<>()*?#~")"), Words{"a'b|;&<>()*?#~"});
}

TEST(ExecLine, UndoesBothLevelsOfEscapes) {
    // Each backslash for the quoting is itself escaped in the value.
    EXPECT_EQ(commandOf(R"("a\\"b")"), Words{R"(a"b)"});
    EXPECT_EQ(commandOf(R"("\\$HOME \\`x\\`")"), Words{"$HOME `x`"});
    EXPECT_EQ(commandOf(R"("a\\\\b")"), Words{R"(a\b)"});
    EXPECT_EQ(commandOf(R"("a\\xb")"), Words{R"(a\xb)"});
    EXPECT_EQ(commandOf(R"(a\sb "c\sd" e\tf)"), (Words{"a", "b", "c d", "e", "f"}));
    EXPECT_EQ(commandOf(R"("a\nb")"), Words{"a\nb"});
}

TEST(ExecLine, ReadsWhatTheSpecificationLeavesOpenAsAShellWould) {
    EXPECT_EQ(commandOf(R"(sh -c 'a "b" \\ c')"), (Words{"sh", "-c", R"(a "b" \ c)"}));
    EXPECT_EQ(commandOf(R"(a\\ b)"), Words{"a b"});
    EXPECT_EQ(commandOf(R"("a\"b")"), Words{R"(a"b)"});
    EXPECT_EQ(commandOf("a\\"), Words{"a\\"});
}

TEST(ExecLine, DropsFieldCodes) {
    for (const char code : std::string("fFuUdDnNickvm")) {
        EXPECT_EQ(commandOf(std::string("a %") + code + " b"), (Words{"a", "b"}));
    }
    EXPECT_EQ(commandOf("a --file=%f%u x%kz"), (Words{"a", "--file=", "xz"}));
    EXPECT_EQ(commandOf(R"(a "%f" "")"), (Words{"a", ""}));
    EXPECT_EQ(commandOf("a %% 100%% \"%%f\""), (Words{"a", "%", "100%", "%f"}));
}

TEST(ExecLine, IsRefusedWholeWhenItIsWrong) {
    for (const char* const line : {"a \"b", "a 'b", "a %y", "a %", "\"a %", "a \"b\\"}) {
        EXPECT_EQ(commandOf(line), Words{}) << line;
    }
}

} // namespace
