// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/worker/Confinement.h"
#include "tests/unit/support/MediaWorkerOnDemand.h"

#include <cerrno>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

namespace {

using platform::worker::filtersSystemCalls;
using platform::worker::MediaWorker;

std::string contentsOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The rest of the line of `text` that starts with `label`, its blanks made single ones.
std::string lineOf(const std::string& text, const std::string& label) {
    const auto start = text.find(label);
    if (start == std::string::npos) {
        return "(none)";
    }
    std::istringstream line(text.substr(start, text.find('\n', start) - start));
    std::string word;
    std::string result;
    line.ignore(static_cast<std::streamsize>(label.size()));
    while (line >> word) {
        result.append(result.empty() ? "" : " ").append(word);
    }
    return result;
}

TEST(ConfinedMediaWorker, HasGivenUpItsRights) {
    MediaWorker worker(settingsOfMediaWorker());
    const auto process = askMediaWorker(worker, "pid");
    ASSERT_TRUE(process);
    const std::string folder = "/proc/" + std::to_string(*process);
    const std::string status = contentsOf(folder + "/status");
    const std::string limits = contentsOf(folder + "/limits");
    EXPECT_EQ(lineOf(status, "NoNewPrivs:"), "1");
    EXPECT_EQ(lineOf(limits, "Max core file size"), "1 1 bytes");
    EXPECT_EQ(lineOf(limits, "Max file size"), "0 0 bytes");
    EXPECT_EQ(lineOf(limits, "Max open files"), "16 16 files");
    EXPECT_EQ(std::filesystem::read_symlink(folder + "/cwd"), "/");
    if (filtersSystemCalls) {
        EXPECT_EQ(lineOf(status, "Seccomp:"), "2");
    }
}

TEST(ConfinedMediaWorker, HasNothingOpenBetweenFiles) {
    MediaWorker worker(settingsOfMediaWorker());
    const auto process = askMediaWorker(worker, "pid");
    ASSERT_TRUE(process);
    EXPECT_EQ(askMediaWorker(worker, "throw"), std::nullopt);
    EXPECT_EQ(askMediaWorker(worker, "nothing"), std::nullopt);
    // The file is closed after the answer, but before the next one is read.
    EXPECT_EQ(askMediaWorker(worker, "width 1"), 1);
    std::set<std::string> names;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(*process) + "/fd")) {
        names.insert(entry.path().filename());
    }
    names.erase("3");
    EXPECT_EQ(names, (std::set<std::string>{"0", "1", "2"}));
}

TEST(ConfinedMediaWorker, ReadsWhatItIsGiven) {
    MediaWorker worker(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(worker, "status"), 0);
}

/// What a library may try once it is not its own master any more.
class RefusedMediaCall : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!filtersSystemCalls) {
            GTEST_SKIP() << "sanitizers need system calls that the filter refuses";
        }
    }
};

TEST_P(RefusedMediaCall, IsNotPermitted) {
    MediaWorker worker(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(worker, GetParam()), EPERM);
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, RefusedMediaCall,
    ::testing::Values("open /etc/passwd", "create /tmp/qm-made", "write", "unlink /tmp/qm-none",
                      "truncate", "socket", "local-socket", "exec", "fork", "kill", "trace",
                      "close-socket", "close-lifeline", "close-socket-otherwise",
                      "close-lifeline-otherwise", "signal-lifeline", "copy-lifeline",
                      "silence-lifeline", "process-option", "code", "later-code", "merged-memory"));

class LimitedMediaMemory : public RefusedMediaCall {};

TEST_F(LimitedMediaMemory, EndsSoonEnough) {
    MediaWorker worker(settingsOfMediaWorker());
    const auto mebibytes = askMediaWorker(worker, "room");
    ASSERT_TRUE(mebibytes);
    EXPECT_LT(*mebibytes, 1024);
    EXPECT_GT(*mebibytes, 512);
}

TEST_F(LimitedMediaMemory, CostsTheFileAtHandAlone) {
    MediaWorker worker(settingsOfMediaWorker());
    EXPECT_EQ(askMediaWorker(worker, "memory"), std::nullopt);
    EXPECT_EQ(askMediaWorker(worker, "width 2"), 2);
}

} // namespace
