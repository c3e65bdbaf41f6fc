// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataService.h"

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

// A service of a user whose preferences hold one array.
std::shared_ptr<QMMetadataService> serviceStoring(const std::string& key, const Keys& array) {
    return QMMetadataService::init({[key, array](const std::string& asked) {
        return asked == key ? std::optional(array) : std::nullopt;
    }});
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

TEST(QMMetadataService, AllKeysAreEnabledUnlessTheUserChose) {
    const auto service = serviceStoring("QMMetadataEnabled_6", {});
    EXPECT_EQ(service->enabledKeysForCategory(QMMetadataCategoryDiskImage),
              (Keys{"imageFormat", "compressedSize", "diskImageEncrypted", "partitionScheme"}));
    for (const std::int64_t number : {0, 2, 7, 17, 18, -1}) {
        EXPECT_EQ(service->enabledKeysForCategory(category(number)), Keys()) << number;
    }
}

TEST(QMMetadataService, EmptyChoiceDisablesEveryKey) {
    const auto service = serviceStoring("QMMetadataEnabled_6", {});
    EXPECT_EQ(service->enabledKeysForCategory(QMMetadataCategoryPDF), Keys());
    EXPECT_EQ(service->enabledKeysForCategory(QMMetadataCategoryText).size(), 7U);
}

TEST(QMMetadataService, ChoiceIsReturnedAsItIsStored) {
    const Keys stored{"shebang", "no such key",     "encoding", std::int64_t{7},
                      true,      Keys{"lineCount"}, "encoding"};
    EXPECT_EQ(serviceStoring("QMMetadataEnabled_5", stored)
                  ->enabledKeysForCategory(QMMetadataCategoryText),
              stored);
    EXPECT_EQ(serviceStoring("QMMetadataEnabled_-1", stored)->enabledKeysForCategory(category(-1)),
              stored);
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
