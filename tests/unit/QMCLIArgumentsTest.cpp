// SPDX-License-Identifier: Apache-2.0
#include "cli/QMCLIArguments.h"

#include <gtest/gtest.h>

namespace {

using Request = QMCLIGlobalArguments::Request;

TEST(GlobalArguments, AreTakenFromTheWholeLine) {
    const auto read = qm_readGlobalArguments({"--json", "info", "--quiet", "a", "--verbose", "-x"});
    EXPECT_EQ(read.request, Request::command);
    EXPECT_EQ(read.options,
              (QMCLIOptions{{"json", "true"}, {"quiet", "true"}, {"verbose", "true"}}));
    EXPECT_EQ(read.remaining, (QMCLIStrings{"info", "a", "-x"}));
    EXPECT_FALSE(read.disablesColor);
}

TEST(GlobalArguments, FirstOfVersionAndHelpWins) {
    EXPECT_EQ(qm_readGlobalArguments({"--help", "--version"}).request, Request::help);
    EXPECT_EQ(qm_readGlobalArguments({"--version", "--help"}).request, Request::version);
    EXPECT_EQ(qm_readGlobalArguments({"info", "-v", "x"}).request, Request::version);
    EXPECT_EQ(qm_readGlobalArguments({"info", "x", "-h"}).request, Request::help);
}

TEST(GlobalArguments, NothingAfterVersionOrHelpIsLookedAt) {
    EXPECT_FALSE(qm_readGlobalArguments({"--version", "--no-color"}).disablesColor);
    EXPECT_TRUE(qm_readGlobalArguments({"--no-color", "--version"}).disablesColor);
}

TEST(GlobalArguments, NoColorIsNoOption) {
    const auto read = qm_readGlobalArguments({"info", "--no-color"});
    EXPECT_TRUE(read.disablesColor);
    EXPECT_TRUE(read.options.empty());
    EXPECT_EQ(read.remaining, QMCLIStrings{"info"});
}

TEST(GlobalArguments, MustMatchExactly) {
    const QMCLIStrings words{"--JSON", "--json=true", "--versio", "-vv", "--no-colour", "--", "-"};
    const auto read = qm_readGlobalArguments(words);
    EXPECT_EQ(read.remaining, words);
    EXPECT_EQ(read.request, Request::command);
    EXPECT_TRUE(read.options.empty());
}

struct Line {
    QMCLIStrings words;
    QMCLIStrings positional;
    QMCLIOptions options;
};

const std::vector<Line> lines{
    {{}, {}, {}},
    {{"a", "b"}, {"a", "b"}, {}},
    {{"--verify=sums.txt", "f"}, {"f"}, {{"verify", "sums.txt"}}},
    {{"--verify=a=b"}, {}, {{"verify", "a=b"}}},
    {{"--sha1", "f"}, {"f"}, {{"sha1", "true"}}},
    {{"--=x"}, {}, {{"", "x"}}},
    {{"--", "-s", "f"}, {"f"}, {{"", "true"}, {"s", "true"}}},
    {{"--x="}, {}, {{"x", ""}}},
    {{"---x"}, {}, {{"-x", "true"}}},
    {{"-p", "right", "/tmp"}, {"/tmp"}, {{"p", "right"}}},
    {{"-p", "-t", "/tmp"}, {"/tmp"}, {{"p", "true"}, {"t", "true"}}},
    {{"/tmp", "-p"}, {"/tmp"}, {{"p", "true"}}},
    {{"-p", ""}, {}, {{"p", ""}}},
    {{"-p", "-"}, {"-"}, {{"p", "true"}}},
    {{"-t", "left"}, {"left"}, {{"t", "true"}}},
    {{"-p", "left", "-p", "right"}, {}, {{"p", "right"}}},
    {{"-abc"}, {"-abc"}, {}},
    {{"-"}, {"-"}, {}},
    {{""}, {""}, {}},
    {{"--add=a", "--add=b"}, {}, {{"add", "b"}}},
    {{"--add=a", "--add"}, {}, {{"add", "true"}}},
    {{"-é"}, {}, {{"é", "true"}}},
    {{"-éé"}, {"-éé"}, {}},
    {{"-日"}, {}, {{"日", "true"}}},
    {{"-😀"}, {"-😀"}, {}},
    {{"-\xFF"}, {}, {{"\xFF", "true"}}},
};

TEST(CommandArguments, AreReadByTheRules) {
    for (const Line& line : lines) {
        const auto read = qm_readCommandArguments(line.words, {});
        EXPECT_EQ(read.positional, line.positional) << testing::PrintToString(line.words);
        EXPECT_EQ(read.options, line.options) << testing::PrintToString(line.words);
    }
}

TEST(CommandArguments, AddToTheGlobalOptions) {
    const auto read = qm_readCommandArguments({"-s", "--json=no"}, {{"json", "true"}});
    EXPECT_EQ(read.options, (QMCLIOptions{{"json", "no"}, {"s", "true"}}));
}

TEST(Flags, CountOnlyWithTheExactValue) {
    const QMCLIOptions options{{"a", "true"}, {"b", "yes"}, {"c", ""}, {"d", "TRUE"}};
    EXPECT_TRUE(qm_isFlagSet(options, "a"));
    EXPECT_FALSE(qm_isFlagSet(options, "b"));
    EXPECT_FALSE(qm_isFlagSet(options, "c"));
    EXPECT_FALSE(qm_isFlagSet(options, "d"));
    EXPECT_FALSE(qm_isFlagSet(options, "e"));
}

} // namespace
