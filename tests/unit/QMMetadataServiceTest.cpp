// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"

#include "tests/unit/support/BoundCatalogue.h"
#include "tests/unit/support/StandardUserDefaults.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::PropertyList;
using Keys = QMMetadataService::Keys;

QMMetadataCategory category(std::int64_t number) {
    return static_cast<QMMetadataCategory>(number);
}

TEST(QMMetadataService, IsOneForTheProcess) {
    EXPECT_NE(QMMetadataService::sharedService(), nullptr);
    EXPECT_EQ(QMMetadataService::sharedService(), QMMetadataService::sharedService());
}

TEST(QMMetadataService, TellsTheCategoryInAnyCase) {
    for (const char* const extension : {"jpg", "JPG", "Jpg"}) {
        EXPECT_EQ(QMMetadataService::categoryForExtension(extension),
                  QMMetadataCategoryImageRaster);
    }
    EXPECT_EQ(QMMetadataService::categoryForExtension("7Z"), QMMetadataCategoryArchive);
    EXPECT_EQ(QMMetadataService::categoryForExtension("Entitlements"), QMMetadataCategoryConfig);
}

TEST(QMMetadataService, KnowsNoOtherExtensions) {
    for (const char* const extension :
         {"", "svgz", "bash", "zsh", ".jpg", "jpg ", "jp", "exe", "epub", "vcf", "obj"}) {
        EXPECT_EQ(QMMetadataService::categoryForExtension(extension), QMMetadataCategoryNone)
            << extension;
    }
    EXPECT_EQ(QMMetadataService::categoryForExtension({}), QMMetadataCategoryNone);
    EXPECT_EQ(QMMetadataService::categoryForExtension("jpg\xFF"), QMMetadataCategoryNone);
    EXPECT_EQ(QMMetadataService::categoryForExtension(std::string("jpg\0", 4)),
              QMMetadataCategoryNone);
}

TEST(QMMetadataService, TypeScriptIsALanguageButItsExtensionAVideo) {
    EXPECT_EQ(QMMetadataService::categoryForExtension("ts"), QMMetadataCategoryVideo);
    EXPECT_EQ(QMMetadataService::programmingLanguageForExtension("ts"), "TypeScript");
}

TEST(QMMetadataService, LanguagesAreToldByLowerCaseAlone) {
    EXPECT_EQ(QMMetadataService::programmingLanguageForExtension("py"), "Python");
    EXPECT_EQ(QMMetadataService::programmingLanguageForExtension("PY"), std::nullopt);
    for (const char* const extension : {"txt", "csv", "log", "ini", "conf", "diff", "patch", ""}) {
        EXPECT_EQ(QMMetadataService::programmingLanguageForExtension(extension), std::nullopt)
            << extension;
    }
}

TEST(QMMetadataService, NamesCategoriesAndNothingElse) {
    EXPECT_EQ(QMMetadataService::nameForCategory(QMMetadataCategoryText), "meta.cat.text");
    EXPECT_EQ(QMMetadataService::nameForCategory(QMMetadataCategoryExecutable),
              "meta.cat.executable");
    for (const std::int64_t number : {0, 18, -1}) {
        EXPECT_EQ(QMMetadataService::nameForCategory(category(number)), "") << number;
    }
}

TEST(QMMetadataService, LabelsKeysAndLeavesOthersAsTheyAre) {
    EXPECT_EQ(QMMetadataService::localizedNameForKey("pdfVersion"), "meta.pdf.version");
    EXPECT_EQ(QMMetadataService::localizedNameForKey("iso"), "ISO");
    EXPECT_EQ(QMMetadataService::localizedNameForKey("ISO"), "ISO");
    EXPECT_EQ(QMMetadataService::localizedNameForKey("no such key"), "no such key");
    EXPECT_EQ(QMMetadataService::localizedNameForKey(""), "");
}

TEST(QMMetadataService, NamesAndLabelsAreInTheUsersLanguage) {
    const BoundCatalogue catalogue("de");
    EXPECT_EQ(QMMetadataService::nameForCategory(QMMetadataCategoryDiskImage), "Plattenabbild");
    EXPECT_EQ(QMMetadataService::nameForCategory(QMMetadataCategoryText), "meta.cat.text");
    EXPECT_EQ(QMMetadataService::nameForCategory(QMMetadataCategoryNone), "");
    EXPECT_EQ(QMMetadataService::localizedNameForKey("pdfVersion"), "Fassung");
    EXPECT_EQ(QMMetadataService::localizedNameForKey("shebang"), "Interpreter");
    EXPECT_EQ(QMMetadataService::localizedNameForKey("yes"), "yes");
}

class EnabledKeys : public testing::Test {
protected:
    static Keys keys(std::int64_t number) {
        return *QMMetadataService::enabledKeysForCategory(category(number));
    }
    void store(const char* key, const PropertyList& value) const {
        defaults.save(PropertyList::Dictionary{{key, value}});
    }

private:
    StandardUserDefaults defaults;
};

TEST_F(EnabledKeys, AreAllUnlessTheUserChose) {
    EXPECT_EQ(keys(13),
              (Keys{"imageFormat", "compressedSize", "diskImageEncrypted", "partitionScheme"}));
    for (const std::int64_t number : {0, 2, 7, 17, 18, -1}) {
        EXPECT_EQ(keys(number), Keys()) << number;
    }
}

TEST_F(EnabledKeys, AreNoneWhenTheUserChoseNone) {
    store("QMMetadataEnabled_6", Keys());
    EXPECT_EQ(keys(6), Keys());
    EXPECT_EQ(keys(5).size(), 7U);
}

TEST_F(EnabledKeys, AreReturnedAsTheyAreStored) {
    const Keys stored{"shebang", "no such key",     "encoding", std::int64_t{7},
                      true,      Keys{"lineCount"}, "encoding"};
    store("QMMetadataEnabled_5", stored);
    EXPECT_EQ(keys(5), stored);
    store("QMMetadataEnabled_-1", stored);
    EXPECT_EQ(keys(-1), stored);
}

TEST_F(EnabledKeys, AreNotCopiedForEachFile) {
    store("QMMetadataEnabled_5", Keys(1000, "nonsense"));
    const auto keys = QMMetadataService::enabledKeysForCategory(QMMetadataCategoryText);
    EXPECT_EQ(keys, QMMetadataService::enabledKeysForCategory(QMMetadataCategoryText));
    store("QMMetadataEnabled_5", Keys());
    EXPECT_EQ(keys->size(), 1000U);
}

TEST_F(EnabledKeys, AreAllWhenWhatIsStoredIsNoArray) {
    for (const PropertyList& value :
         {PropertyList("shebang"), PropertyList(false), PropertyList(std::int64_t{0}),
          PropertyList(PropertyList::Dictionary{{"shebang", true}})}) {
        store("QMMetadataEnabled_5", value);
        EXPECT_EQ(keys(5).size(), 7U);
    }
}

TEST(QMMetadataService, KeysAreContainedAsTextsOnly) {
    const Keys keys{std::int64_t{7}, "encoding", Keys{"lineCount"},
                    PropertyList::Dictionary{{"shebang", "shebang"}}};
    EXPECT_TRUE(QMMetadataService::containsKey(keys, "encoding"));
    for (const char* const key : {"7", "lineCount", "shebang", "Encoding", "encodin", ""}) {
        EXPECT_FALSE(QMMetadataService::containsKey(keys, key)) << key;
    }
    EXPECT_FALSE(QMMetadataService::containsKey({}, "encoding"));
}

} // namespace
