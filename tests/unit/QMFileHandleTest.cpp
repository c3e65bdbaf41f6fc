// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMFileHandle.h"

#include "tests/unit/support/FailingRead.h"
#include "tests/unit/support/LogRecorder.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using platform::bytesOf;
using platform::Data;
using platform::FileHandle;

constexpr auto anyLength = std::numeric_limits<std::size_t>::max();
const std::string isDirectoryError = "[NSFileHandle+Quillmere] read error: Is a directory";

Data dataOf(std::string_view text) {
    return {bytesOf(text).begin(), bytesOf(text).end()};
}

FileHandle opened(const std::string& path) {
    auto file = FileHandle::forReadingAtPath(path);
    EXPECT_TRUE(file.has_value());
    return file ? *std::move(file) : FileHandle::fromDescriptor(-1);
}

FileHandle openedFolder() {
    return FileHandle::fromDescriptor(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

TEST(FileHandle, KnowsTheSizeOfItsFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f", "abc");
    const FileHandle file = opened(path);
    EXPECT_EQ(file.size(), 3U);
    std::filesystem::resize_file(path, 5'000'000'000);
    EXPECT_EQ(file.size(), 5'000'000'000U);
    EXPECT_EQ(opened("/proc/self/status").size(), 0U);
    EXPECT_EQ(FileHandle::fromDescriptor(-1).size(), 0U);
}

TEST(FileHandle, TakesRegularFilesAloneWhenAsked) {
    const TemporaryFolder folder;
    static_cast<void>(folder.file("f", "abc"));
    auto file = FileHandle::forReadingRegularFileAtPath(folder.link("link", "f"));
    ASSERT_TRUE(file);
    EXPECT_EQ(qm_readDataToEndOfFile(*file), dataOf("abc"));
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    for (const std::string& path : {folder.path("fifo"), folder.path(), folder.path("missing"),
                                    std::string("/dev/zero"), std::string()}) {
        EXPECT_FALSE(FileHandle::forReadingRegularFileAtPath(path)) << path;
    }
}

// Whoever waits for a reader of a pipe would take this for one.
TEST(FileHandle, OpensNothingButRegularFilesWhenAsked) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path("fifo");
    ASSERT_EQ(::mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
    const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(::inotify_add_watch(watch, pipe.c_str(), IN_OPEN), 0);
    EXPECT_FALSE(FileHandle::forReadingRegularFileAtPath(pipe));
    std::array<char, 1024> events{};
    EXPECT_EQ(::read(watch, events.data(), events.size()), -1);
    ::close(watch);
}

TEST(QMFileHandle, ReadsToTheEnd) {
    const TemporaryFolder folder;
    const std::string contents(200'001, 'x');
    FileHandle file = opened(folder.file("f", contents));
    EXPECT_EQ(qm_readDataToEndOfFile(file), dataOf(contents));
    EXPECT_EQ(qm_readDataToEndOfFile(file), Data());
}

TEST(QMFileHandle, ReadsPieceByPieceThenNothing) {
    const TemporaryFolder folder;
    FileHandle file = opened(folder.file("f", "abcdefg"));
    EXPECT_EQ(qm_readDataUpToLength(file, std::size_t{3}), dataOf("abc"));
    EXPECT_EQ(qm_readDataUpToLength(file, std::size_t{0}), Data());
    EXPECT_EQ(qm_readDataUpToLength(file, std::size_t{100}), dataOf("defg"));
    EXPECT_EQ(qm_readDataUpToLength(file, std::size_t{100}), Data());
}

TEST(QMFileHandle, ReadsIntoMemoryOfTheCaller) {
    const TemporaryFolder folder;
    FileHandle file = opened(folder.file("f", "abcde"));
    std::array<std::byte, 4> buffer{};
    EXPECT_EQ(qm_readDataUpToLength(file, buffer), 4U);
    EXPECT_EQ(Data(buffer.begin(), buffer.end()), dataOf("abcd"));
    EXPECT_EQ(qm_readDataUpToLength(file, buffer), 1U);
    EXPECT_EQ(qm_readDataUpToLength(file, buffer), 0U);
}

TEST(QMFileHandle, AnyLengthTakesMemoryForWhatIsThereOnly) {
    const TemporaryFolder folder;
    FileHandle file = opened(folder.file("f", "abc"));
    EXPECT_EQ(qm_readDataUpToLength(file, anyLength), dataOf("abc"));
}

TEST(QMFileHandle, PipesAreReadUntilTheLengthIsReached) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    FileHandle reader = FileHandle::fromDescriptor(pipe[0]);
    ASSERT_EQ(::write(pipe[1], "abc", 3), 3);
    ASSERT_EQ(::write(pipe[1], "def", 3), 3);
    EXPECT_EQ(qm_readDataUpToLength(reader, std::size_t{4}), dataOf("abcd"));
    ::close(pipe[1]);
    EXPECT_EQ(qm_readDataUpToLength(reader, std::size_t{4}), dataOf("ef"));
    EXPECT_EQ(qm_readDataUpToLength(reader, std::size_t{4}), Data());
}

TEST(QMFileHandle, FailedReadsAreLoggedAndGiveNothing) {
    LogRecorder log;
    FileHandle folder = openedFolder();
    std::array<std::byte, 4> buffer{};
    EXPECT_EQ(qm_readDataToEndOfFile(folder), std::nullopt);
    EXPECT_EQ(qm_readDataUpToLength(folder, std::size_t{4}), std::nullopt);
    EXPECT_EQ(qm_readDataUpToLength(folder, buffer), std::nullopt);
    EXPECT_EQ(log.messages, std::vector<std::string>(3, isDirectoryError));
}

TEST(QMFileHandle, FailureIsNotShownOnTheTerminal) {
    const LogRecorder log;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    FileHandle folder = openedFolder();
    EXPECT_EQ(qm_readDataToEndOfFile(folder), std::nullopt);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(QMFileHandle, WhatWasReadBeforeAFailureComesFirst) {
    LogRecorder log;
    const FailingRead source(5000, 'm');
    FileHandle file = source.open();
    EXPECT_EQ(qm_readDataUpToLength(file, std::size_t{65536}), dataOf(std::string(5000, 'm')));
    EXPECT_TRUE(log.messages.empty());
    EXPECT_EQ(qm_readDataUpToLength(file, std::size_t{65536}), std::nullopt);
    EXPECT_EQ(log.messages.size(), 1U);
}

TEST(QMFileHandle, ReadingToTheEndGivesNothingAfterAFailure) {
    LogRecorder log;
    const FailingRead source(5000, 'm');
    FileHandle file = source.open();
    EXPECT_EQ(qm_readDataToEndOfFile(file), std::nullopt);
    EXPECT_EQ(log.messages.size(), 1U);
}

#ifndef QM_IS_SANITIZED // whose allocators end the process instead
TEST(QMFileHandle, MoreThanMemoryHoldsIsLoggedAndGivesNothing) {
    const auto readEndlessly = [] {
        const rlimit limit{std::size_t{512} << 20, std::size_t{512} << 20};
        ::setrlimit(RLIMIT_AS, &limit);
        const LogRecorder log;
        FileHandle file = opened("/dev/zero");
        const bool gaveNothing = !qm_readDataToEndOfFile(file);
        const bool logged =
            log.messages ==
            std::vector<std::string>{"[NSFileHandle+Quillmere] read exception: std::bad_alloc"};
        std::_Exit(gaveNothing && logged ? 0 : 1);
    };
    EXPECT_EXIT(readEndlessly(), testing::ExitedWithCode(0), "");
}
#endif

TEST(FileHandle, OpensFilesButNeitherFoldersNorWhatIsMissing) {
    const TemporaryFolder folder;
    EXPECT_TRUE(FileHandle::forReadingAtPath(folder.file("f")));
    EXPECT_FALSE(FileHandle::forReadingAtPath(folder.path()));
    EXPECT_FALSE(FileHandle::forReadingAtPath(folder.path("missing")));
    EXPECT_FALSE(FileHandle::forReadingAtPath(""));
    EXPECT_FALSE(FileHandle::forReadingAtPath(folder.link("dangling", "nowhere")));
}

TEST(FileHandle, ReadsFailAfterClosing) {
    const LogRecorder log;
    const TemporaryFolder folder;
    FileHandle file = opened(folder.file("f", "abc"));
    file.close();
    file.close();
    EXPECT_EQ(qm_readDataToEndOfFile(file), std::nullopt);
}

TEST(FileHandle, MovingTakesTheDescriptorAlong) {
    const TemporaryFolder folder;
    FileHandle first = opened(folder.file("f", "abc"));
    FileHandle second = std::move(first);
    EXPECT_EQ(qm_readDataToEndOfFile(second), dataOf("abc"));
    FileHandle third = opened(folder.file("g", "xyz"));
    third = std::move(second);
    EXPECT_EQ(qm_readDataToEndOfFile(third), Data());
}

} // namespace
