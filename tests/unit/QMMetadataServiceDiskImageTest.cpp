// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"
#include "tests/unit/support/BoundCatalogue.h"
#include "tests/unit/support/DiskImageStandIn.h"

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::PropertyList;
using Info = PropertyList::Dictionary;
using Keys = QMMetadataService::Keys;
using Texts = std::vector<std::string>;

const Keys allKeys{"partitionScheme", "imageFormat", "compressedSize", "diskImageEncrypted"};

class QMMetadataServiceDiskImage : public testing::Test {
protected:
    // Lets the tool describe every image like this.
    void describe(const PropertyList& info) const {
        const auto bytes = info.serialized(PropertyList::Format::xml);
        std::ofstream(tool.folderPath() + "/answer", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        tool.says("cat '" + tool.folderPath() + "/answer'");
    }

    [[nodiscard]] QMMetadataEntries entriesOf(const std::string& path,
                                              const Keys& keys = allKeys) const {
        QMMetadataEntries entries;
        QMMetadataService::init({QMDiskImageService::init({tool.path()})})
            ->extractDiskImageMetadata(path, keys, entries);
        return entries;
    }

    // "label=value" of each entry, with a star before those that are primary.
    [[nodiscard]] Texts texts(const PropertyList& info, const Keys& keys = allKeys) const {
        describe(info);
        Texts texts;
        for (const auto& entry : entriesOf(tool.image(), keys)) {
            std::string text(entry->isPrimary ? "*" : "");
            text.append(entry->localizedKey.value_or("none")).append("=");
            texts.push_back(text.append(entry->value.value_or("none")));
        }
        return texts;
    }

    DiskImageStandIn tool;
};

Info partitions(const PropertyList& scheme) {
    return {{"partitions", Info{{"partition-scheme", scheme}}}};
}

TEST_F(QMMetadataServiceDiskImage, TellsFourThings) {
    Info info = partitions("GUID");
    info.emplace("Format Description", "UDIF read-only compressed (zlib)");
    info.emplace("Format", "UDZO");
    info.emplace("Total Bytes", std::int64_t{1'500'000});
    info.emplace("Compressed Bytes", std::int64_t{7});
    info.emplace("Encrypted", false);
    EXPECT_EQ(texts(info),
              (Texts{"*meta.diskImage.format=UDIF read-only compressed (zlib)",
                     "meta.diskImage.compressedSize=1.5 MB", "meta.diskImage.encrypted=no",
                     "meta.diskImage.partitionScheme=GUID"}));
    EXPECT_EQ(tool.arguments(), "imageinfo\n" + tool.image() + "\n-plist\n");
    const auto entries = entriesOf(tool.image());
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[0]->key, "imageFormat");
    EXPECT_EQ(entries[1]->key, "compressedSize");
    EXPECT_EQ(entries[2]->key, "diskImageEncrypted");
    EXPECT_EQ(entries[3]->key, "partitionScheme");
}

TEST_F(QMMetadataServiceDiskImage, TakesTheFirstNameOfTheFormatThatIsThere) {
    EXPECT_EQ(texts(Info{{"format", "c"}}), (Texts{"*meta.diskImage.format=c"}));
    EXPECT_EQ(texts(Info{{"format", "c"}, {"Format", "b"}}), (Texts{"*meta.diskImage.format=b"}));
    EXPECT_EQ(texts(Info{{"Format", "b"}, {"Format Description", ""}}), Texts());
    EXPECT_EQ(texts(Info{{"Format", "b"}, {"Format Description", std::int64_t{1}}}), Texts());
}

TEST_F(QMMetadataServiceDiskImage, TakesTheCompressedSizeWhereThereIsNoOther) {
    EXPECT_EQ(texts(Info{{"Compressed Bytes", std::int64_t{2'000}}}),
              (Texts{"meta.diskImage.compressedSize=2 KB"}));
    EXPECT_EQ(
        texts(Info{{"Compressed Bytes", std::int64_t{2'000}}, {"Total Bytes", std::int64_t{0}}}),
        (Texts{"meta.diskImage.compressedSize=Zero KB"}));
}

TEST_F(QMMetadataServiceDiskImage, SaysWhetherItIsEncryptedOnlyWhenToldSo) {
    EXPECT_EQ(texts(Info{{"Encrypted", true}}), (Texts{"meta.diskImage.encrypted=yes"}));
    EXPECT_EQ(texts(Info{{"encrypted", true}}), (Texts{"meta.diskImage.encrypted=yes"}));
    EXPECT_EQ(texts(Info{{"encrypted", true}, {"Encrypted", false}}),
              (Texts{"meta.diskImage.encrypted=no"}));
    EXPECT_EQ(texts(Info{{"Encrypted", "YES"}}), (Texts{"meta.diskImage.encrypted=yes"}));
    EXPECT_EQ(texts(Info{{"Encrypted", std::int64_t{0}}}), (Texts{"meta.diskImage.encrypted=no"}));
}

TEST_F(QMMetadataServiceDiskImage, SaysYesAndNoInTheUsersLanguage) {
    const BoundCatalogue catalogue("de");
    EXPECT_EQ(texts(Info{{"Format", "no"}, {"Encrypted", true}}),
              (Texts{"*meta.diskImage.format=no", "verschlüsselt=ja"}));
    EXPECT_EQ(texts(Info{{"Encrypted", false}}), (Texts{"verschlüsselt=nein"}));
}

TEST_F(QMMetadataServiceDiskImage, LooksForTheSchemeInADictionaryOnly) {
    EXPECT_EQ(texts(partitions("")), Texts());
    EXPECT_EQ(texts(partitions(std::int64_t{1})), Texts());
    EXPECT_EQ(texts(Info{{"partitions", PropertyList::Array{partitions("GUID")}}}), Texts());
    EXPECT_EQ(texts(Info{{"partition-scheme", "GUID"}}), Texts());
}

TEST_F(QMMetadataServiceDiskImage, TellsOnlyWhatIsEnabledAndRunsTheToolAnyway) {
    Info info = partitions("GUID");
    info.emplace("Format", "UDZO");
    EXPECT_EQ(texts(info, {"partitionScheme"}), (Texts{"meta.diskImage.partitionScheme=GUID"}));
    EXPECT_EQ(texts(info, {}), Texts());
    EXPECT_TRUE(tool.wasRun());
}

TEST_F(QMMetadataServiceDiskImage, AppendsToWhatIsThere) {
    describe(Info{{"Format", "UDZO"}});
    QMMetadataEntries entries{QMMetadataEntry::entryWithKey("a", "b", "c")};
    QMMetadataService::init({QMDiskImageService::init({tool.path()})})
        ->extractDiskImageMetadata(tool.image(), allKeys, entries);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0]->key, "a");
}

TEST_F(QMMetadataServiceDiskImage, TellsNothingWhereTheToolDoesNot) {
    for (const char* const script : {"exit 0", "echo nonsense", "exit 1"}) {
        tool.says(script);
        EXPECT_TRUE(entriesOf(tool.image()).empty()) << script;
    }
    EXPECT_EQ(texts(PropertyList::Array{"UDZO"}), Texts());
}

TEST_F(QMMetadataServiceDiskImage, StartsNothingForAMissingImage) {
    EXPECT_TRUE(entriesOf(tool.image() + ".none").empty());
    EXPECT_FALSE(tool.wasRun());
}

} // namespace
