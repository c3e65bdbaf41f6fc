// SPDX-License-Identifier: Apache-2.0
#include "cli/Console.h"

#include "tests/unit/support/TemporaryFolder.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

using platform::Json;

template <class Action>
std::string outputOf(const Action& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

template <class Action>
std::string errorsOf(const Action& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

TEST(Console, LinesAreBareWhenOutputIsNoTerminal) {
    EXPECT_EQ(outputOf([] { qm_print("a {} {}", 1, "b"); }), "a 1 b\n");
    EXPECT_EQ(outputOf([] { qm_success("a"); }), "a\n");
    EXPECT_EQ(outputOf([] { qm_bold("a"); }), "a\n");
    EXPECT_EQ(outputOf([] { qm_dim("a"); }), "a\n");
    EXPECT_EQ(outputOf([] { qm_print(""); }), "\n");
}

TEST(Console, ErrorsGoToStandardErrorOnly) {
    EXPECT_EQ(errorsOf([] { qm_error("bad {}", "x"); }), "bad x\n");
    EXPECT_EQ(outputOf([] { errorsOf([] { qm_error("bad"); }); }), "");
}

TEST(Console, BytesOfTextsPassThrough) {
    EXPECT_EQ(outputOf([] { qm_print("{}", "%s {} \xFF\n\x1B"); }), "%s {} \xFF\n\x1B\n");
}

TEST(Console, JsonIsIndentedAndEndsWithALineBreak) {
    EXPECT_EQ(outputOf([] {
                  qm_json(Json::Object{{"b", std::int64_t{1}}, {"a", "x"}});
              }),
              "{\n  \"b\": 1,\n  \"a\": \"x\"\n}\n");
}

TEST(Console, JsonThatCannotBeWrittenIsAnErrorLine) {
    std::string output;
    const std::string errors = errorsOf([&output] {
        output = outputOf([] {
            qm_json(Json::Object{{"x", std::numeric_limits<double>::quiet_NaN()}});
            qm_json("text alone");
        });
    });
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors.find("JSON serialization error: "), 0U);
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 2);
}

std::string outputOfRecords(int count) {
    return outputOf([count] {
        QMCLIRecords records;
        for (int i = 0; i < count; ++i) {
            records.add(Json::Object{{"a", Json::Array{true}}});
        }
        records.end();
    });
}

TEST(Console, RecordsAreNothingAnObjectOrAnArray) {
    const std::string element = "  {\n    \"a\": [\n      true\n    ]\n  }";
    EXPECT_EQ(outputOfRecords(0), "");
    EXPECT_EQ(outputOfRecords(1), "{\n  \"a\": [\n    true\n  ]\n}\n");
    EXPECT_EQ(outputOfRecords(2), "[\n" + element + ",\n" + element + "\n]\n");
    EXPECT_EQ(outputOfRecords(3), "[\n" + element + ",\n" + element + ",\n" + element + "\n]\n");
}

TEST(Console, RecordsAreNotKeptUntilTheEnd) {
    QMCLIRecords records;
    EXPECT_NE(outputOf([&records] {
                  records.add(Json::Object{});
                  records.add(Json::Object{});
              }),
              "");
}

// All of it is too much for the stream's buffer, so none is left to fail again at the end.
[[noreturn]] void printToFullDevice() {
    if (std::freopen("/dev/full", "w", stdout) != nullptr) {
        qm_print("{}", std::string(std::size_t{1} << 20, 'x'));
    }
    errno = ENOENT;
    std::_Exit(qm_flush());
}

TEST(ConsoleDeathTest, TheReasonOfAFailedWriteIsNotThatOfALaterCall) {
    EXPECT_EXIT(printToFullDevice(), testing::ExitedWithCode(ENOSPC), "");
}

TEST(Console, HasNothingToSayOfOutputThatArrived) {
    EXPECT_EQ(outputOf([] {
                  qm_print("a");
                  EXPECT_EQ(qm_flush(), 0);
              }),
              "a\n");
}

TEST(AbsolutePath, LeavesAbsolutePathsAsTheyAre) {
    EXPECT_EQ(qm_absolutePath("/x/../y"), "/x/../y");
    EXPECT_EQ(qm_absolutePath("//a//"), "//a//");
}

class AbsolutePathIn : public testing::Test {
protected:
    void SetUp() override { std::filesystem::current_path(folder.path()); }
    void TearDown() override { std::filesystem::current_path("/"); }
    TemporaryFolder folder;
};

TEST_F(AbsolutePathIn, TakesOthersFromTheCurrentFolder) {
    EXPECT_EQ(qm_absolutePath("a/./b/../c"), folder.path("a/c"));
    EXPECT_EQ(qm_absolutePath("a//b/"), folder.path("a/b"));
    EXPECT_EQ(qm_absolutePath("."), folder.path());
    EXPECT_EQ(qm_absolutePath(""), folder.path());
}

TEST_F(AbsolutePathIn, DoesNotExpandTildes) {
    EXPECT_EQ(qm_absolutePath("~/x"), folder.path("~/x"));
    EXPECT_EQ(qm_absolutePath("~"), folder.path("~"));
}

TEST_F(AbsolutePathIn, NamesTheFileTheSystemWouldOpenBehindALink) {
    ASSERT_NE(folder.folder("far/away"), "");
    const std::string file = folder.file("far/file");
    ASSERT_NE(folder.link("near", "far/away"), "");
    EXPECT_EQ(qm_absolutePath("near/../file"), file);
    EXPECT_EQ(qm_absolutePath("near/../missing"), folder.path("missing"));
    EXPECT_EQ(qm_absolutePath("./near"), folder.path("near"));
}

TEST_F(AbsolutePathIn, KeepsTheOperandWhenTheCurrentFolderIsGone) {
    const std::string gone = folder.folder("gone");
    std::filesystem::current_path(gone);
    std::filesystem::remove(gone);
    for (const char* operand : {"x", "~/x", ".", "../x", "a/./b"}) {
        EXPECT_EQ(qm_absolutePath(operand), operand);
    }
}

} // namespace
