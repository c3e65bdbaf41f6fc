// SPDX-License-Identifier: Apache-2.0
#include "services/QMChecksumService.h"

#include "tests/unit/support/FailingRead.h"
#include "tests/unit/support/LogRecorder.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using Result = std::optional<std::string>;

const std::string emptySHA256 = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

constexpr std::array allAlgorithms{QMChecksumAlgorithmSHA256, QMChecksumAlgorithmSHA1,
                                   QMChecksumAlgorithmSHA512, QMChecksumAlgorithmMD5};

QMChecksumAlgorithm invalidAlgorithm(std::int64_t number) {
    return static_cast<QMChecksumAlgorithm>(number);
}

/// What the system's own tool prints for a file: the first word of its output.
std::string outputOf(const std::string& tool, const std::string& path) {
    struct Close {
        void operator()(std::FILE* pipe) const { ::pclose(pipe); }
    };
    const std::unique_ptr<std::FILE, Close> pipe(::popen((tool + " '" + path + "'").c_str(), "r"));
    std::array<char, 256> line{};
    EXPECT_NE(std::fgets(line.data(), line.size(), pipe.get()), nullptr) << tool;
    const std::string text = line.data();
    return text.substr(0, text.find(' '));
}

std::string systemTool(QMChecksumAlgorithm algorithm) {
    switch (algorithm) {
    case QMChecksumAlgorithmSHA1: return "sha1sum";
    case QMChecksumAlgorithmSHA512: return "sha512sum";
    case QMChecksumAlgorithmMD5: return "md5sum";
    default: return "sha256sum";
    }
}

std::string patternOfSize(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>(i * 7 + i / 251);
    }
    return text;
}

TEST(QMChecksumService, NamesAlgorithms) {
    EXPECT_EQ(QMChecksumService::displayNameForAlgorithm(QMChecksumAlgorithmSHA256), "SHA-256");
    EXPECT_EQ(QMChecksumService::displayNameForAlgorithm(QMChecksumAlgorithmSHA1), "SHA-1");
    EXPECT_EQ(QMChecksumService::displayNameForAlgorithm(QMChecksumAlgorithmSHA512), "SHA-512");
    EXPECT_EQ(QMChecksumService::displayNameForAlgorithm(QMChecksumAlgorithmMD5), "MD5");
    EXPECT_EQ(QMChecksumService::displayNameForAlgorithm(invalidAlgorithm(4)), "SHA-256");
    EXPECT_EQ(QMChecksumService::displayNameForAlgorithm(invalidAlgorithm(-1)), "SHA-256");
}

TEST(QMChecksumService, AlgorithmsKeepTheirNumbers) {
    EXPECT_EQ(QMChecksumAlgorithmSHA256, 0);
    EXPECT_EQ(QMChecksumAlgorithmSHA1, 1);
    EXPECT_EQ(QMChecksumAlgorithmSHA512, 2);
    EXPECT_EQ(QMChecksumAlgorithmMD5, 3);
    EXPECT_EQ(QMChecksumAlgorithm(), QMChecksumAlgorithmSHA256);
}

TEST(QMChecksumService, EmptyFileHasTheDigestOfNothing) {
    const TemporaryFolder folder;
    const std::string path = folder.file("empty");
    EXPECT_EQ(QMChecksumService::checksumForFileAtPath(path, QMChecksumAlgorithmSHA256),
              emptySHA256);
    EXPECT_EQ(QMChecksumService::checksumForFileAtPath(path, QMChecksumAlgorithmMD5),
              "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(QMChecksumService, AgreesWithTheSystemsToolsAroundTheChunkSize) {
    const TemporaryFolder folder;
    for (const std::size_t size : {0U, 1U, 65'535U, 65'536U, 65'537U, 200'000U}) {
        const std::string path = folder.file("f", patternOfSize(size));
        for (const QMChecksumAlgorithm algorithm : allAlgorithms) {
            EXPECT_EQ(QMChecksumService::checksumForFileAtPath(path, algorithm),
                      outputOf(systemTool(algorithm), path))
                << size << " bytes, " << systemTool(algorithm);
        }
    }
}

TEST(QMChecksumService, AgreesWithTheSystemsToolOnAFileBeyondFourGigabytes) {
#ifdef QM_IS_SANITIZED
    GTEST_SKIP() << "takes as long as a hundred others";
#endif
    const TemporaryFolder folder;
    const std::string path = folder.file("sparse", "head");
    std::filesystem::resize_file(path, (std::uintmax_t{4} << 30) + 1);
    EXPECT_EQ(QMChecksumService::checksumForFileAtPath(path, QMChecksumAlgorithmSHA1),
              outputOf("sha1sum", path));
}

TEST(QMChecksumService, TextIsLowerCaseAndTwiceTheDigestLong) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f", "contents");
    const std::array<std::size_t, 4> lengths{64, 40, 128, 32};
    for (const QMChecksumAlgorithm algorithm : allAlgorithms) {
        const Result text = QMChecksumService::checksumForFileAtPath(path, algorithm);
        ASSERT_TRUE(text);
        EXPECT_EQ(text->size(), lengths.at(static_cast<std::size_t>(algorithm)));
        EXPECT_EQ(text->find_first_not_of("0123456789abcdef"), std::string::npos);
    }
}

TEST(QMChecksumService, MissingFilesAndFoldersGiveNothing) {
    const TemporaryFolder folder;
    EXPECT_EQ(
        QMChecksumService::checksumForFileAtPath(folder.path("missing"), QMChecksumAlgorithmSHA256),
        std::nullopt);
    EXPECT_EQ(QMChecksumService::checksumForFileAtPath("", QMChecksumAlgorithmSHA256),
              std::nullopt);
    EXPECT_EQ(QMChecksumService::checksumForFileAtPath(folder.path(), QMChecksumAlgorithmSHA256),
              std::nullopt);
}

TEST(QMChecksumService, InvalidAlgorithmGivesNothingAfterReadingTheWholeFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f", patternOfSize(200'000));
    EXPECT_EQ(QMChecksumService::checksumForFileAtPath(path, invalidAlgorithm(4)), std::nullopt);
    EXPECT_EQ(QMChecksumService::checksumForFileAtPath(path, invalidAlgorithm(-1)), std::nullopt);

    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    auto file = platform::FileHandle::fromDescriptor(descriptor);
    EXPECT_EQ(QMChecksumService::checksumForFileHandle(file, invalidAlgorithm(4)), std::nullopt);
    EXPECT_EQ(::lseek(descriptor, 0, SEEK_CUR), 200'000);
}

TEST(QMChecksumService, ReadFailureEndsTheFileAndIsLogged) {
    LogRecorder log;
    const TemporaryFolder folder;
    const FailingRead source(70'000, 'm');
    auto file = source.open();
    const std::string path = folder.file("same", std::string(70'000, 'm'));
    EXPECT_EQ(QMChecksumService::checksumForFileHandle(file, QMChecksumAlgorithmSHA256),
              QMChecksumService::checksumForFileAtPath(path, QMChecksumAlgorithmSHA256));
    EXPECT_EQ(log.messages.size(), 1U);
}

TEST(QMChecksumService, FailureOfTheFirstReadGivesTheDigestOfNothing) {
    LogRecorder log;
    // Nothing is mapped at address 0, so its first read fails.
    EXPECT_EQ(QMChecksumService::checksumForFileAtPath("/proc/self/mem", QMChecksumAlgorithmSHA256),
              emptySHA256);
    ASSERT_EQ(log.messages.size(), 1U);
    EXPECT_EQ(log.messages.front(), "[NSFileHandle+Quillmere] read error: Input/output error");
}

TEST(QMChecksumService, LeavesNoDescriptorOpen) {
    const auto openDescriptors = [] {
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    };
    const LogRecorder log;
    const TemporaryFolder folder;
    const std::string path = folder.file("f", "contents");
    const auto before = openDescriptors();
    for (const auto algorithm : {QMChecksumAlgorithmSHA1, invalidAlgorithm(9)}) {
        for (const std::string& each : {path, folder.path(), std::string("/proc/self/mem")}) {
            static_cast<void>(QMChecksumService::checksumForFileAtPath(each, algorithm));
        }
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(QMChecksumService, HexStringWritesBytesInOrder) {
    constexpr std::array bytes{std::byte{0x00}, std::byte{0xAB}, std::byte{0x10}};
    EXPECT_EQ(QMChecksumService::hexString(bytes.data(), bytes.size()), "00ab10");
    EXPECT_EQ(QMChecksumService::hexString(bytes.data(), 0), "");
    EXPECT_EQ(QMChecksumService::hexString(nullptr, 0), "");
}

} // namespace
