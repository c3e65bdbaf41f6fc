// SPDX-License-Identifier: Apache-2.0
#include "cli/QMCLIDispatcher.h"

#include "cli/Console.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Call {
    QMCLIStrings arguments;
    QMCLIOptions options;
};
std::optional<Call> lastCall;
int commandsMade = 0;

class FakeCommand final : public QMCLICommand {
public:
    FakeCommand() { ++commandsMade; }
    static std::string_view name() { return "info"; }
    static std::string_view summary() { return "Does nothing."; }
    static std::string_view usage() { return "qm info"; }
    std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                  const QMCLIOptions& options) override {
        lastCall = Call{arguments, options};
        return -7;
    }
};

struct Outcome {
    std::int32_t status;
    std::string output;
    std::string errors;
};

Outcome run(QMCLIDispatcher& dispatcher, const QMCLIStrings& words) {
    std::vector<const char*> argv{"qm"};
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    const auto argc = static_cast<std::int32_t>(argv.size());
    argv.push_back(nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const std::int32_t status = dispatcher.runWithArgc(argc, argv.data());
    return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

class Dispatcher : public testing::Test {
protected:
    void SetUp() override {
        lastCall.reset();
        commandsMade = 0;
        dispatcher.setCommands({{"info", qm_commandClass<FakeCommand>()}});
    }
    QMCLIDispatcher dispatcher;
};

TEST(QMCLIDispatcher, KnowsFourCommandsInOrder) {
    const QMCLIDispatcher dispatcher;
    std::vector<std::string> words;
    for (const auto& [word, command] : dispatcher.commands()) {
        EXPECT_EQ(word, command.name());
        EXPECT_TRUE(command.usage().starts_with("qm " + word)) << word;
        EXPECT_TRUE(command.summary().ends_with(".")) << word;
        EXPECT_NE(command.create(), nullptr);
        words.push_back(word);
    }
    EXPECT_EQ(words, (std::vector<std::string>{"info", "checksum", "tags", "open"}));
}

TEST_F(Dispatcher, RunsTheCommandAndReturnsItsStatus) {
    EXPECT_EQ(run(dispatcher, {"info", "a", "--x=y", "b"}).status, -7);
    ASSERT_TRUE(lastCall);
    EXPECT_EQ(lastCall->arguments, (QMCLIStrings{"a", "b"}));
    EXPECT_EQ(lastCall->options, (QMCLIOptions{{"x", "y"}}));
}

TEST_F(Dispatcher, MakesAFreshCommandForEveryRun) {
    static_cast<void>(run(dispatcher, {"info"}));
    static_cast<void>(run(dispatcher, {"info"}));
    EXPECT_EQ(commandsMade, 2);
}

TEST_F(Dispatcher, GlobalOptionsReachTheCommandFromEitherSide) {
    for (const QMCLIStrings& words :
         {QMCLIStrings{"--json", "info", "a"}, QMCLIStrings{"info", "--json", "a"}}) {
        static_cast<void>(run(dispatcher, words));
        ASSERT_TRUE(lastCall);
        EXPECT_EQ(lastCall->options, (QMCLIOptions{{"json", "true"}}));
        EXPECT_EQ(lastCall->arguments, QMCLIStrings{"a"});
    }
}

TEST_F(Dispatcher, UnknownCommandsAreReportedOnBothStreams) {
    for (const char* word : {"nonsense", "INFO", "-s", "", "info "}) {
        const Outcome outcome = run(dispatcher, {word, "info"});
        EXPECT_EQ(outcome.status, 10);
        EXPECT_EQ(outcome.errors, "Unknown command: " + std::string(word) + "\n");
        EXPECT_EQ(outcome.output, "Run 'qm --help' for available commands.\n");
    }
    EXPECT_FALSE(lastCall);
}

TEST_F(Dispatcher, VersionEndsTheLine) {
    const Outcome outcome = run(dispatcher, {"info", "-v", "x"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "qm 1.0.0\n");
    EXPECT_FALSE(lastCall);
}

TEST_F(Dispatcher, HelpIsGlobalEvenAfterACommand) {
    const Outcome help = run(dispatcher, {"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.starts_with("qm — Quillmere CLI Tool\n\nUsage: qm <command>"));
    EXPECT_EQ(run(dispatcher, {"info", "--help", "f"}).output, help.output);
    EXPECT_EQ(run(dispatcher, {"-h"}).output, help.output);
    EXPECT_FALSE(lastCall);
}

TEST_F(Dispatcher, NothingToDoPrintsTheHelp) {
    const Outcome help = run(dispatcher, {"--help"});
    EXPECT_EQ(run(dispatcher, {}).output, help.output);
    EXPECT_EQ(run(dispatcher, {"--json", "--no-color"}).output, help.output);
    EXPECT_EQ(run(dispatcher, {}).status, 0);
}

TEST_F(Dispatcher, BytesThatAreNotUTF8PassThrough) {
    const Outcome outcome = run(dispatcher, {"\xFFx"});
    EXPECT_EQ(outcome.errors, "Unknown command: \xFFx\n");
}

TEST(QMCLIDispatcherWithoutWords, PrintsTheHelp) {
    QMCLIDispatcher dispatcher;
    const char* const none = nullptr;
    testing::internal::CaptureStdout();
    EXPECT_EQ(dispatcher.runWithArgc(0, &none), 0);
    EXPECT_TRUE(testing::internal::GetCapturedStdout().starts_with("qm — Quillmere CLI Tool\n"));
}

} // namespace
