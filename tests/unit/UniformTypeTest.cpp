// SPDX-License-Identifier: Apache-2.0
#include "platform/UniformType.h"

#include "tests/unit/support/TypeNames.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::UniformType::conformsTo;
using platform::UniformType::identifierForItem;
using platform::UniformType::ItemKind;
using platform::UniformType::kindForIdentifier;
using platform::UniformType::mimeType;

const Pairs dynamicSamples{
    {"srt", "dyn.ah62d4rv4ge81g6xy"},    {"toml", "dyn.ah62d4rv4ge81k55rru"},
    {"conf", "dyn.ah62d4rv4ge80g55sq2"}, {"mkv", "dyn.ah62d4rv4ge804450"},
    {"gpx", "dyn.ah62d4rv4ge80s6d2"},    {"ini", "dyn.ah62d4rv4ge80w5xm"},
    {"dat", "dyn.ah62d4rv4ge80k2py"},    {"lua", "dyn.ah62d4rv4ge8027pb"},
    {"xyz", "dyn.ah62d4rv4ge81u8p4"},    {"sqlite", "dyn.ah62d4rv4ge81g6pqrf4gn"},
    {"go", "dyn.ah62d4rv4ge80s52"},      {"tex", "dyn.ah62d4rv4ge81k3p2"},
    {"db", "dyn.ah62d4rv4ge80k2u"},      {"xcf", "dyn.ah62d4rv4ge81u25g"},
    {"pub", "dyn.ah62d4rv4ge81a7pc"},    {"woff", "dyn.ah62d4rv4ge81s55gq2"},
    {"tsx", "dyn.ah62d4rv4ge81k652"},    {"jsx", "dyn.ah62d4rv4ge80y652"},
};

// ---- Items ----

TEST(UniformType, ItemsThatAreNoFilesAreNamedByTheirKindWhateverTheExtension) {
    const std::vector<std::pair<ItemKind, std::string>> expected{
        {ItemKind::volume, "public.volume"},
        {ItemKind::symbolicLink, "public.symlink"},
        {ItemKind::namedPipe, "public.named-pipe"},
        {ItemKind::socket, "public.socket"},
        {ItemKind::characterDevice, "public.character-special"},
        {ItemKind::blockDevice, "public.block-special"}};
    for (const auto& [kind, identifier] : expected) {
        for (const char* extension : {"", "app", "txt", "xyz"}) {
            EXPECT_EQ(identifierForItem(kind, extension), identifier) << extension;
        }
    }
}

TEST(UniformType, FilesWithoutExtensionAreToldByTheirExecuteBits) {
    EXPECT_EQ(identifierForItem(ItemKind::file, ""), "public.data");
    EXPECT_EQ(identifierForItem(ItemKind::executableFile, ""), "public.unix-executable");
}

TEST(UniformType, KnownExtensionsMatterMoreThanExecuteBits) {
    EXPECT_EQ(identifierForItem(ItemKind::executableFile, "sh"), "public.shell-script");
    EXPECT_EQ(identifierForItem(ItemKind::executableFile, "PNG"), "public.png");
}

TEST(UniformType, ExecutableFilesWithUnknownExtensionAreUnixExecutables) {
    EXPECT_EQ(identifierForItem(ItemKind::executableFile, "11"), "public.unix-executable");
    EXPECT_EQ(identifierForItem(ItemKind::executableFile, "xyz"), "public.unix-executable");
}

TEST(UniformType, ExtensionsOfFoldersAloneAreUnknownForFiles) {
    EXPECT_EQ(fileType("framework").substr(0, 5), "dyn.a");
    EXPECT_EQ(identifierForItem(ItemKind::executableFile, "kext"), "public.unix-executable");
}

TEST(UniformType, FoldersArePlainUnlessTheirExtensionNamesABundle) {
    for (const char* extension : {"", "d", "txt", "zip", "epub", "framework2"}) {
        EXPECT_EQ(folderType(extension), "public.folder") << extension;
    }
    EXPECT_EQ(folderType("app"), "com.apple.application-bundle");
    EXPECT_EQ(folderType("APP"), "com.apple.application-bundle");
    EXPECT_EQ(folderType("framework"), "com.apple.framework");
    EXPECT_EQ(folderType("prefpane"), "com.apple.systempreference.prefpane");
    EXPECT_EQ(folderType("sparsebundle"), "com.apple.disk-image-sparse-bundle");
}

TEST(UniformType, ExtensionMatchingIgnoresCase) {
    EXPECT_EQ(fileType("JPG"), "public.jpeg");
    EXPECT_EQ(fileType("Txt"), "public.plain-text");
    EXPECT_EQ(fileType("savedsearch"), "com.apple.finder.smart-folder");
    EXPECT_EQ(fileType("SAVEDSEARCH"), "com.apple.finder.smart-folder");
}

TEST(UniformType, ExtensionsMatchAsAWhole) {
    for (const std::string& extension :
         {std::string("pn"), std::string("pngg"), std::string("png "), std::string(" png"),
          std::string("png\0", 4), std::string("tar.gz"), std::string(".png")}) {
        EXPECT_EQ(fileType(extension).substr(0, 5), "dyn.a") << extension;
    }
}

TEST(UniformType, AmongSeveralTypesFilesTakeTheFirstOneOfFiles) {
    const Pairs expected{{"mp4", "public.mpeg-4"},
                         {"plist", "com.apple.property-list"},
                         {"xml", "public.xml"},
                         {"otf", "public.opentype-font"},
                         {"otc", "public.opentype-collection-font"},
                         {"smf", "public.midi-audio"},
                         {"pkg", "com.apple.installer-package-archive"},
                         {"mpkg", "com.apple.installer-package-archive"},
                         {"pages", "com.apple.iWork.Pages.sffpages"},
                         {"numbers", "com.apple.iWork.Numbers.sffnumbers"},
                         {"key", "com.apple.iWork.Keynote.sffkey"},
                         {"app", "com.apple.application-file"},
                         {"ts", "public.mpeg-2-transport-stream"},
                         {"raw", "com.panasonic.raw-image"},
                         {"epub", "org.idpf.epub-container"},
                         {"md", "net.daringfireball.markdown"},
                         {"rs", "public.rust-source"},
                         {"gz", "org.gnu.gnu-zip-archive"}};
    for (const auto& [extension, identifier] : expected) {
        EXPECT_EQ(fileType(extension), identifier) << extension;
    }
    EXPECT_EQ(fileType("keynote").substr(0, 5), "dyn.a");
}

TEST(UniformType, AmongSeveralTypesFoldersTakeTheOneOfFolders) {
    const Pairs expected{{"pkg", "com.apple.installer-package"},
                         {"mpkg", "com.apple.installer-meta-package"},
                         {"pages", "com.apple.iWork.Pages.pages"},
                         {"numbers", "com.apple.iWork.Numbers.numbers"},
                         {"key", "com.apple.iWork.Keynote.key"},
                         {"kth", "com.apple.iWork.Keynote.kth"},
                         {"template", "com.apple.iWork.Pages.template"},
                         {"rtfd", "com.apple.rtfd"}};
    for (const auto& [extension, identifier] : expected) {
        EXPECT_EQ(folderType(extension), identifier) << extension;
    }
}

// ---- Dynamic identifiers ----

TEST(UniformType, UnknownExtensionsGiveTheComputedIdentifier) {
    for (const auto& [extension, identifier] : dynamicSamples) {
        EXPECT_EQ(fileType(extension), identifier) << extension;
        EXPECT_EQ(fileType(upperCased(extension)), identifier) << extension;
    }
}

TEST(UniformType, UndeclaredExtensionsAreDynamicPlainDataAndDocuments) {
    for (const char* extension :
         {"mkv",  "mka",  "go",  "lua",    "tex",     "ini",         "conf", "cfg",  "toml",
          "tsx",  "jsx",  "sql", "sqlite", "sqlite3", "db",          "xcf",  "woff", "woff2",
          "opus", "alac", "vue", "kt",     "scss",    "less",        "srt",  "gpx",  "deb",
          "rpm",  "lzh",  "zst", "lz4",    "pub",     "entitlements"}) {
        const std::string identifier = fileType(extension);
        EXPECT_EQ(identifier.substr(0, 12), "dyn.ah62d4rv") << extension;
        EXPECT_TRUE(conformsTo(identifier, "public.data")) << extension;
        EXPECT_EQ(kindForIdentifier(identifier), "Document") << extension;
        EXPECT_EQ(mimeType(identifier), std::nullopt) << extension;
    }
}

TEST(UniformType, BytesBeyondAsciiEnterTheDynamicIdentifierAsTheyAre) {
    // The bits of "?0=6:1=" and of the two bytes of the letter É, in groups of five.
    EXPECT_EQ(fileType("\xC3\x89"), "dyn.ah62d4rv4ge86hck");
    EXPECT_NE(fileType("\xC3\x89"), fileType("\xC3\xA9"));
    EXPECT_EQ(fileType("A\xC3\x89"), fileType("a\xC3\x89"));
    EXPECT_NE(fileType("\xFF"), fileType("\xFE"));
}

TEST(UniformType, LongExtensionsHaveIdentifiersToo) {
    const std::string identifier = fileType(std::string(100000, 'q'));
    EXPECT_EQ(identifier.size(), 5U + (8 * (7 + 100000) + 4) / 5);
    EXPECT_TRUE(conformsTo(identifier, "public.data"));
}

TEST(UniformType, DynamicIdentifiersOfFilesConformToPlainDataAndNothingElse) {
    for (const auto& [extension, identifier] : dynamicSamples) {
        for (const char* other : {"public.data", "public.item", "PUBLIC.DATA"}) {
            EXPECT_TRUE(conformsTo(identifier, other)) << extension << ' ' << other;
        }
        for (const char* other : {"public.content", "public.text", "public.archive",
                                  "public.directory", "dyn.ah62d4rv4ge8", "no.such.type", ""}) {
            EXPECT_FALSE(conformsTo(identifier, other)) << extension << ' ' << other;
        }
        EXPECT_TRUE(conformsTo(identifier, identifier));
        EXPECT_TRUE(conformsTo(upperCased(identifier), identifier));
        EXPECT_TRUE(conformsTo(upperCased(identifier), "public.data"));
        EXPECT_FALSE(conformsTo("public.data", identifier));
    }
}

TEST(UniformType, DynamicIdentifiersOfOtherThingsConformToThemselvesAlone) {
    // These spell "?0=7:1=srt", "?0=", part of the mark of plain data, and nothing.
    for (const char* identifier :
         {"dyn.ah62d4r34ge81g6xy", "dyn.ah62d4", "dyn.ah62d4r", "dyn.aa", "dyn.a9"}) {
        EXPECT_TRUE(conformsTo(identifier, identifier)) << identifier;
        EXPECT_FALSE(conformsTo(identifier, "public.data")) << identifier;
        EXPECT_FALSE(conformsTo(identifier, "public.item")) << identifier;
    }
    // And these the mark itself, alone and with the colon after it.
    EXPECT_TRUE(conformsTo("dyn.ah62d4ru", "public.data"));
    EXPECT_TRUE(conformsTo("dyn.ah62d4rv", "public.item"));
}

TEST(UniformType, MalformedDynamicIdentifiersConformToNothing) {
    for (const char* identifier :
         {"dyn.", "dyn.a", "dyn.b", "dyn.bh62d4rv4ge81g6xy", "dyn.ah62d4rv4ge81i", "dyn.aj",
          "dyn.al", "dyn.ao", "dyn.ah62d4rv4ge81g6xy ", "dyn.ah62-d4rv", " dyn.ah62d4rv"}) {
        EXPECT_FALSE(conformsTo(identifier, identifier)) << identifier;
        EXPECT_FALSE(conformsTo(identifier, "public.data")) << identifier;
        EXPECT_EQ(kindForIdentifier(identifier), "Document") << identifier;
    }
}

// ---- Conformance ----

TEST(UniformType, ConformanceIgnoresCase) {
    EXPECT_TRUE(conformsTo("PUBLIC.PNG", "public.Image"));
    EXPECT_TRUE(conformsTo("com.apple.iwork.pages.sffpages", "com.apple.iWork.Pages.sffpages"));
}

TEST(UniformType, ConformanceFollowsEveryParentUpwardsOnly) {
    EXPECT_TRUE(conformsTo("public.svg-image", "public.image"));
    EXPECT_TRUE(conformsTo("public.svg-image", "public.text"));
    EXPECT_TRUE(conformsTo("com.apple.application-bundle", "public.executable"));
    EXPECT_TRUE(conformsTo("com.apple.application-bundle", "com.apple.bundle"));
    EXPECT_TRUE(conformsTo("com.apple.application-bundle", "com.apple.package"));
    EXPECT_FALSE(conformsTo("public.image", "public.svg-image"));
    EXPECT_FALSE(conformsTo("public.png", "public.jpeg"));
    EXPECT_FALSE(conformsTo("com.apple.framework", "com.apple.package"));
}

TEST(UniformType, UndeclaredAndEmptyIdentifiersConformToNothing) {
    for (const char* identifier :
         {"", "com.example.none", "public.", "public.png2", "public.dat"}) {
        EXPECT_FALSE(conformsTo(identifier, identifier)) << identifier;
        EXPECT_FALSE(conformsTo(identifier, "public.data")) << identifier;
        EXPECT_FALSE(conformsTo("public.data", identifier)) << identifier;
        EXPECT_EQ(mimeType(identifier), std::nullopt) << identifier;
        EXPECT_EQ(kindForIdentifier(identifier), "Document") << identifier;
    }
    EXPECT_FALSE(conformsTo("com.apple.xcode.entitlements-property-list", "public.data"));
}

TEST(UniformType, ArchivesAndDiskImagesConformToArchive) {
    const Pairs archives{{"zip", "public.zip-archive"},
                         {"tar", "public.tar-archive"},
                         {"gtar", "org.gnu.gnu-tar-archive"},
                         {"gz", "org.gnu.gnu-zip-archive"},
                         {"gzip", "org.gnu.gnu-zip-archive"},
                         {"tgz", "org.gnu.gnu-zip-tar-archive"},
                         {"bz2", "public.bzip2-archive"},
                         {"bz", "public.bzip2-archive"},
                         {"tbz2", "public.tar-bzip2-archive"},
                         {"tbz", "public.tar-bzip2-archive"},
                         {"xz", "org.tukaani.xz-archive"},
                         {"txz", "org.tukaani.tar-xz-archive"},
                         {"7z", "org.7-zip.7-zip-archive"},
                         {"z", "public.z-archive"},
                         {"cpio", "public.cpio-archive"},
                         {"pax", "public.cpio-archive"},
                         {"cpgz", "com.apple.bom-compressed-cpio"},
                         {"xar", "com.apple.xar-archive"},
                         {"xip", "com.apple.xip-archive"},
                         {"pkg", "com.apple.installer-package-archive"},
                         {"mpkg", "com.apple.installer-package-archive"},
                         {"jar", "com.sun.java-archive"},
                         {"war", "com.sun.web-application-archive"},
                         {"aar", "com.apple.archive"},
                         {"yaa", "com.apple.archive"},
                         {"aea", "com.apple.encrypted-archive"},
                         {"hqx", "com.apple.binhex-archive"},
                         {"bin", "com.apple.macbinary-archive"},
                         {"as", "com.apple.applesingle-archive"},
                         {"uu", "public.uuencoded-archive"},
                         {"sit", "com.stuffit.archive.sit"},
                         {"sea", "com.stuffit.archive.sit"},
                         {"sitx", "com.stuffit.archive.sitx"},
                         {"sidx", "com.stuffit.archive.sidx"},
                         {"cab", "com.microsoft.cab"},
                         {"apk", "vnd.android.package-archive"},
                         {"ipa", "com.apple.iphone.package-archive"},
                         {"xlsb", "com.microsoft.excel.sheet.binary.macroenabled"},
                         {"rar", "com.rarlab.rar-archive"}};
    for (const auto& [extension, identifier] : archives) {
        EXPECT_EQ(fileType(extension), identifier) << extension;
        EXPECT_TRUE(conformsTo(identifier, "public.archive")) << identifier;
    }
    for (const char* extension : {"dmg", "iso", "img", "cdr", "sparseimage", "toast"}) {
        EXPECT_TRUE(conformsTo(fileType(extension), "public.disk-image")) << extension;
        EXPECT_TRUE(conformsTo(fileType(extension), "public.archive")) << extension;
    }
    EXPECT_TRUE(conformsTo("com.pkware.zip-archive", "public.archive"));
    EXPECT_TRUE(conformsTo(folderType("sparsebundle"), "public.archive"));
}

TEST(UniformType, DocumentsAndFoldersAreNoArchives) {
    for (const char* extension : {"docx", "xlsx", "pptx", "odt", "ods", "odp", "epub", "pages",
                                  "numbers", "key", "webarchive"}) {
        EXPECT_TRUE(conformsTo(fileType(extension), "public.data")) << extension;
        EXPECT_FALSE(conformsTo(fileType(extension), "public.archive")) << extension;
    }
    for (const char* extension : {"", "app", "pkg", "pages", "rtfd", "bundle"}) {
        EXPECT_FALSE(conformsTo(folderType(extension), "public.archive")) << extension;
    }
    EXPECT_FALSE(conformsTo("public.archive", "public.data"));
    EXPECT_FALSE(conformsTo("public.archive", "public.item"));
}

} // namespace
