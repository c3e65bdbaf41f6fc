// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"
#include "tests/unit/support/BoundCatalogue.h"
#include "tests/unit/support/LogRecorder.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using Keys = QMMetadataService::Keys;
using Texts = std::vector<std::string>;

const Keys allKeys{"encoding",   "lineCount", "wordCount", "charCount",
                   "lineEnding", "language",  "shebang"};

QMMetadataEntries entriesOf(const std::string& path, const Keys& keys = allKeys) {
    QMMetadataEntries entries;
    QMMetadataService::sharedService()->extractTextMetadata(path, keys, entries);
    return entries;
}

// "key=value" of each entry.
Texts valuesOf(const std::string& path, const Keys& keys = allKeys) {
    Texts texts;
    for (const auto& entry : entriesOf(path, keys)) {
        texts.push_back(entry->key.value_or("none") + "=" + entry->value.value_or("none"));
    }
    return texts;
}

class QMMetadataServiceText : public testing::Test {
protected:
    TemporaryFolder folder;
};

TEST_F(QMMetadataServiceText, CountsAShortFile) {
    EXPECT_EQ(valuesOf(folder.file("f.txt", "a\nb\nc\n")),
              (Texts{"encoding=Unicode (UTF-8)", "lineCount=4", "charCount=6", "wordCount=3",
                     "lineEnding=LF"}));
}

TEST_F(QMMetadataServiceText, EmptyFileHasOneLine) {
    EXPECT_EQ(valuesOf(folder.file("f.csv")),
              (Texts{"encoding=Unicode (UTF-8)", "lineCount=1", "charCount=0", "wordCount=0",
                     "lineEnding=LF"}));
}

TEST_F(QMMetadataServiceText, CountsOfLongerFilesAreMarked) {
    std::string contents;
    while (contents.size() < 200'000) {
        contents += "seven x\n";
    }
    EXPECT_EQ(valuesOf(folder.file("f.log", contents)),
              (Texts{"encoding=Unicode (UTF-8)", "lineCount=~8193+", "charCount=~65536+",
                     "wordCount=~16384+", "lineEnding=LF"}));
}

TEST_F(QMMetadataServiceText, CountsAreMarkedFrom65537Bytes) {
    const Keys keys{"lineCount", "charCount", "wordCount"};
    const std::string contents(65'537, 'a');
    EXPECT_EQ(valuesOf(folder.file("exact.txt", contents.substr(1)), keys),
              (Texts{"lineCount=1", "charCount=65536", "wordCount=1"}));
    EXPECT_EQ(valuesOf(folder.file("longer.txt", contents), keys),
              (Texts{"lineCount=~1+", "charCount=~65536+", "wordCount=~1+"}));
}

TEST_F(QMMetadataServiceText, LengthOfTheFileBehindALinkCounts) {
    static_cast<void>(folder.file("longer.txt", std::string(65'537, 'a')));
    EXPECT_EQ(valuesOf(folder.link("link.txt", "longer.txt"), {"lineCount"}),
              Texts{"lineCount=~1+"});
}

TEST_F(QMMetadataServiceText, WhatIsNotUTF8IsLatin1) {
    EXPECT_EQ(valuesOf(folder.file("f.md", "caf\xE9 cr\xE8me")),
              (Texts{"encoding=Western (ISO Latin 1)", "lineCount=1", "charCount=10", "wordCount=2",
                     "lineEnding=LF", "language=Markdown"}));
}

TEST_F(QMMetadataServiceText, CharacterThatIsCutOffMakesItLatin1) {
    const std::string contents = std::string(65'535, 'a') + "é";
    EXPECT_EQ(valuesOf(folder.file("f.txt", contents), {"encoding", "charCount"}),
              (Texts{"encoding=Western (ISO Latin 1)", "charCount=~65536+"}));
}

TEST_F(QMMetadataServiceText, CharactersAreUnitsOfUTF16) {
    EXPECT_EQ(valuesOf(folder.file("f.txt", "\uFEFFé\U0001F600\r\n"), {"charCount"}),
              Texts{"charCount=6"});
}

TEST_F(QMMetadataServiceText, ScriptOfAnotherSystemKeepsItsCarriageReturn) {
    EXPECT_EQ(valuesOf(folder.file("f.SH", "#!/bin/sh -e\r\nexit 0\r\n")),
              (Texts{"encoding=Unicode (UTF-8)", "lineCount=3", "charCount=22", "wordCount=5",
                     "lineEnding=CRLF", "language=Shell", "shebang=#!/bin/sh -e\r"}));
}

TEST_F(QMMetadataServiceText, CarriageReturnsAloneMakeNoLines) {
    EXPECT_EQ(valuesOf(folder.file("f.txt", "a\rb\rc\r"), {"lineCount", "lineEnding"}),
              (Texts{"lineCount=1", "lineEnding=CR"}));
}

TEST_F(QMMetadataServiceText, ShebangOfLatin1IsShownInUTF8) {
    EXPECT_EQ(valuesOf(folder.file("f", "#!/bin/caf\xE9"), {"shebang"}),
              Texts{"shebang=#!/bin/café"});
}

TEST_F(QMMetadataServiceText, OnlyEnabledKeysHaveEntries) {
    const std::string script = folder.file("f.py", "#!/usr/bin/env python3\n");
    EXPECT_EQ(valuesOf(folder.file("f.txt", "no script"), {"shebang"}), Texts());
    EXPECT_EQ(valuesOf(script, {"shebang", std::int64_t{5}, "unknown", "language", "shebang"}),
              (Texts{"language=Python", "shebang=#!/usr/bin/env python3"}));
    EXPECT_EQ(valuesOf(script, {}), Texts());
}

TEST_F(QMMetadataServiceText, LabelsEntriesAndMarksHeadlines) {
    Texts labels;
    for (const auto& entry : entriesOf(folder.file("f.rb", "#!ruby"))) {
        labels.push_back(entry->localizedKey.value_or("none") + (entry->isPrimary ? "!" : ""));
    }
    EXPECT_EQ(labels, (Texts{"meta.text.encoding", "meta.text.lineCount!", "meta.text.charCount",
                             "meta.text.wordCount", "meta.text.lineEnding", "meta.text.language!",
                             "Shebang"}));
}

TEST_F(QMMetadataServiceText, OnlyLabelsAndTheEncodingAreTranslated) {
    const BoundCatalogue catalogue("de");
    const std::string path = folder.file("f.rb", "#!ruby");
    EXPECT_EQ(entriesOf(path, {"encoding"}).front()->localizedKey, "Zeichensatz");
    EXPECT_EQ(entriesOf(path, {"shebang"}).front()->localizedKey, "Shebang");
    EXPECT_EQ(valuesOf(path, {"encoding", "lineEnding", "language"}),
              (Texts{"encoding=Unicode-Zeichen (UTF-8)", "lineEnding=LF", "language=Ruby"}));
}

TEST_F(QMMetadataServiceText, AppendsToWhatIsThere) {
    QMMetadataEntries entries{QMMetadataEntry::entryWithKey("first", "l", "v")};
    QMMetadataService::sharedService()->extractTextMetadata(folder.file("f.txt"), {"lineCount"},
                                                            entries);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries.front()->key, "first");
}

TEST_F(QMMetadataServiceText, WhatCannotBeOpenedHasNoEntries) {
    EXPECT_EQ(valuesOf(folder.path("missing.txt")), Texts());
    EXPECT_EQ(valuesOf(folder.link("dangling.txt", "missing.txt")), Texts());
    EXPECT_EQ(valuesOf(folder.folder("folder.txt")), Texts());
    EXPECT_EQ(valuesOf(""), Texts());
    const std::string path = folder.file("secret.txt", "x");
    std::filesystem::permissions(path, std::filesystem::perms::none);
    if (::access(path.c_str(), R_OK) != 0) {
        EXPECT_EQ(valuesOf(path), Texts());
    }
}

TEST_F(QMMetadataServiceText, FIFOsAndDevicesAreNotRead) {
    ASSERT_EQ(::mkfifo(folder.path("fifo.txt").c_str(), 0600), 0);
    EXPECT_EQ(valuesOf(folder.path("fifo.txt")), Texts());
    EXPECT_EQ(valuesOf(folder.link("zero.txt", "/dev/zero")), Texts());
    EXPECT_EQ(valuesOf(folder.link("null.txt", "/dev/null")), Texts());
}

TEST_F(QMMetadataServiceText, FilesThatTheSystemMakesUpAreRead) {
    const Texts values = valuesOf(folder.link("status.txt", "/proc/self/status"), {"lineCount"});
    ASSERT_EQ(values.size(), 1U);
    EXPECT_GT(values.front(), "lineCount=1");
}

TEST_F(QMMetadataServiceText, FailedReadHasNoEntriesAndIsLogged) {
    const LogRecorder log;
    // The first page of the process is never there.
    EXPECT_EQ(valuesOf(folder.link("memory.txt", "/proc/self/mem")), Texts());
    EXPECT_EQ(log.messages, Texts{"[NSFileHandle+Quillmere] read error: Input/output error"});
}

} // namespace
