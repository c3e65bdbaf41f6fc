// SPDX-License-Identifier: Apache-2.0
#include "services/QMTextSample.h"

#include "tests/unit/support/FailingRead.h"
#include "tests/unit/support/LogRecorder.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using platform::FileHandle;
using platform::Text::Encoding;

constexpr std::size_t most = QMTextSample::maximumLength;

QMTextSample sampleOf(const std::string& contents) {
    const TemporaryFolder folder;
    auto file = FileHandle::forReadingRegularFileAtPath(folder.file("f", contents));
    auto sample = QMTextSample::fromFile(*file);
    EXPECT_TRUE(sample.has_value());
    return sample.value_or(QMTextSample());
}

TEST(QMTextSample, HoldsAShortFileAsItIs) {
    const std::string contents("\uFEFFa\0\r\nß", 9);
    const QMTextSample sample = sampleOf(contents);
    EXPECT_EQ(sample.text, contents);
    EXPECT_EQ(sample.encoding, Encoding::UTF8);
    EXPECT_FALSE(sample.isTruncated);
}

TEST(QMTextSample, OfAnEmptyFileIsEmptyUTF8) {
    const QMTextSample sample = sampleOf("");
    EXPECT_EQ(sample.text, "");
    EXPECT_EQ(sample.encoding, Encoding::UTF8);
    EXPECT_FALSE(sample.isTruncated);
}

TEST(QMTextSample, HoldsTheFirst65536Bytes) {
    const std::string contents = std::string(most - 1, 'a') + "bc";
    const QMTextSample whole = sampleOf(contents.substr(0, most));
    EXPECT_EQ(whole.text, contents.substr(0, most));
    EXPECT_FALSE(whole.isTruncated);
    const QMTextSample part = sampleOf(contents);
    EXPECT_EQ(part.text, contents.substr(0, most));
    EXPECT_TRUE(part.isTruncated);
}

TEST(QMTextSample, CharacterThatIsCutOffMakesItLatin1) {
    const std::string before(most - 1, 'a');
    const QMTextSample cut = sampleOf(before + "é");
    EXPECT_EQ(cut.encoding, Encoding::ISOLatin1);
    EXPECT_EQ(cut.text, before + "Ã");
    EXPECT_TRUE(cut.isTruncated);
    EXPECT_EQ(sampleOf(before.substr(1) + "éx").encoding, Encoding::UTF8);
}

TEST(QMTextSample, WhatIsNotUTF8IsLatin1) {
    const QMTextSample sample = sampleOf("caf\xE9");
    EXPECT_EQ(sample.encoding, Encoding::ISOLatin1);
    EXPECT_EQ(sample.text, "café");
}

TEST(QMTextSample, FailedReadGivesNone) {
    const LogRecorder log;
    for (const std::size_t readable : {0U, 1U, 4096U}) {
        FileHandle file = FailingRead(readable, 'a').open();
        EXPECT_EQ(QMTextSample::fromFile(file), std::nullopt) << readable;
    }
    EXPECT_EQ(log.messages.size(), 3U);
}

TEST(QMTextSample, FileMayVanishOrGrowOnceItIsOpen) {
    const TemporaryFolder folder;
    const std::string path = folder.file("f", "before");
    auto file = FileHandle::forReadingRegularFileAtPath(path);
    std::ofstream(path, std::ios::app) << std::string(most, 'x');
    std::filesystem::remove(path);
    const auto sample = QMTextSample::fromFile(*file);
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->text.size(), most);
    EXPECT_TRUE(sample->isTruncated);
}

TEST(QMTextSample, LinesAreOneMoreThanLineFeeds) {
    EXPECT_EQ(qm_lineCount(""), 1U);
    EXPECT_EQ(qm_lineCount("a"), 1U);
    EXPECT_EQ(qm_lineCount("a\nb\nc\n"), 4U);
    EXPECT_EQ(qm_lineCount("a\rb\r"), 1U);
    EXPECT_EQ(qm_lineCount("a\r\nb\r\n"), 3U);
    EXPECT_EQ(qm_lineCount("\n\n"), 3U);
}

TEST(QMTextSample, AnyCarriageReturnDecidesTheLineEnding) {
    EXPECT_EQ(qm_lineEnding(""), "LF");
    EXPECT_EQ(qm_lineEnding("a\nb"), "LF");
    EXPECT_EQ(qm_lineEnding("a\rb"), "CR");
    EXPECT_EQ(qm_lineEnding("a\nb\r"), "CR");
    EXPECT_EQ(qm_lineEnding("a\n\rb"), "CR");
    EXPECT_EQ(qm_lineEnding("a\r\nb"), "CRLF");
    EXPECT_EQ(qm_lineEnding("a\nb\rc\r\nd"), "CRLF");
    EXPECT_EQ(qm_lineEnding("\r\r\n"), "CRLF");
}

TEST(QMTextSample, ShebangIsTheWholeFirstLine) {
    EXPECT_EQ(qm_shebangLine("#!/bin/sh -e \nx"), "#!/bin/sh -e ");
    EXPECT_EQ(qm_shebangLine("#!/bin/sh\r\nx"), "#!/bin/sh\r");
    EXPECT_EQ(qm_shebangLine("#!a\rb"), "#!a\rb");
    EXPECT_EQ(qm_shebangLine("#!"), "#!");
    EXPECT_EQ(qm_shebangLine("#!\n"), "#!");
}

TEST(QMTextSample, OtherTextsHaveNoShebang) {
    for (const char* const text :
         {"", "#", "# !", "#\n!", " #!/bin/sh", "\n#!/bin/sh", "\uFEFF#!/bin/sh"}) {
        EXPECT_EQ(qm_shebangLine(text), std::nullopt) << text;
    }
}

} // namespace
