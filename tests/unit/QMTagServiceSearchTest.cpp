// SPDX-License-Identifier: Apache-2.0
#include "platform/DispatchQueue.h"
#include "services/QMTagService.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace DispatchQueue = platform::DispatchQueue;
using Tags = QMTagService::Tags;

TEST(QMTagServiceSearch, FindsFilesOfTheWholeComputerAndDeliversOnceOnTheMainThread) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f");
    const std::string tag = "tag of " + folder.path();
    if (!QMTagService::setTags({tag}, path)) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    std::vector<Tags> answers;
    std::thread::id deliveredOn;
    QMTagService::findFilesWithTag(tag, [&](const Tags& paths) {
        answers.push_back(paths);
        deliveredOn = std::this_thread::get_id();
    });
    EXPECT_TRUE(answers.empty());
    DispatchQueue::runMainQueueUntil([&] { return !answers.empty(); });
    EXPECT_EQ(deliveredOn, std::this_thread::get_id());
    bool passed = false;
    DispatchQueue::asyncMain([&] { passed = true; });
    DispatchQueue::runMainQueueUntil([&] { return passed; });
    EXPECT_EQ(answers, std::vector<Tags>{{path}});
}

TEST(QMTagServiceSearch, EmptyTagIsAnsweredAtOnceOnTheCallingThread) {
    bool called = false;
    QMTagService::findFilesWithTag("", [&](const Tags& paths) {
        called = true;
        EXPECT_TRUE(paths.empty());
    });
    EXPECT_TRUE(called);
}

TEST(QMTagServiceSearch, NothingIsStartedWithoutACompletion) {
    QMTagService::findFilesWithTag("x", {});
    QMTagService::findFilesWithTag("", nullptr);
}

} // namespace
