// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataCatalogue.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

QMMetadataCategory category(std::int64_t number) {
    return static_cast<QMMetadataCategory>(number);
}

Texts words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

// "a=b c=d" as pairs.
std::map<std::string, std::string> pairs(const std::string& text) {
    std::map<std::string, std::string> result;
    for (const std::string& word : words(text)) {
        const auto middle = word.find('=');
        EXPECT_TRUE(result.emplace(word.substr(0, middle), word.substr(middle + 1)).second) << word;
    }
    return result;
}

const std::map<std::int64_t, std::string> extensionsByCategory{
    {1, "jpg jpeg png gif bmp tiff tif webp heic heif ico raw cr2 nef arw dng psd xcf"},
    {2, "svg eps ai"},
    {3, "mp4 mov avi mkv wmv flv webm m4v mpg mpeg 3gp ts"},
    {4, "mp3 aac m4a flac wav aiff aif ogg wma opus alac mid midi"},
    {5, "txt md csv json xml yaml yml html htm css js py rb sh c h m mm cpp hpp java swift go rs "
        "php sql log ini conf toml tsx jsx lua r tex diff patch"},
    {6, "pdf"},
    {7, "docx doc xlsx xls pptx ppt odt ods odp pages numbers keynote rtf"},
    {8, "zip tar gz tgz bz2 xz 7z rar jar"},
    {10, "cer crt pem p12 pub"},
    {11, "ttf otf woff woff2 ttc"},
    {12, "sqlite sqlite3 db"},
    {13, "dmg iso img"},
    {14, "plist entitlements"},
};

const std::map<std::int64_t, std::string> keysByCategory{
    {1, "dimensions colorDepth colorModel colorProfile dpi hasAlpha animated camera lens exposure "
        "aperture iso focalLength dateOriginal gps software copyright"},
    {3, "duration dimensions videoCodec frameRate audioTracks audioCodec"},
    {4, "duration codec sampleRate channels bitDepth title artist album"},
    {5, "encoding lineCount wordCount charCount lineEnding language shebang"},
    {6, "pageCount pdfVersion title author creator encrypted searchable"},
    {13, "imageFormat compressedSize diskImageEncrypted partitionScheme"},
};

const std::string labels =
    "dimensions=meta.img.dimensions colorDepth=meta.img.colorDepth colorModel=meta.img.colorModel "
    "colorProfile=meta.img.colorProfile dpi=meta.img.dpi hasAlpha=meta.img.hasAlpha "
    "animated=meta.img.animated camera=meta.img.camera lens=meta.img.lens "
    "exposure=meta.img.exposure aperture=meta.img.aperture iso=ISO "
    "focalLength=meta.img.focalLength dateOriginal=meta.img.dateOriginal gps=meta.img.gps "
    "software=meta.img.software copyright=meta.img.copyright "
    "duration=meta.video.duration videoCodec=meta.video.codec frameRate=meta.video.frameRate "
    "audioTracks=meta.video.audioTracks audioCodec=meta.video.audioCodec "
    "codec=meta.audio.codec sampleRate=meta.audio.sampleRate channels=meta.audio.channels "
    "bitDepth=meta.audio.bitDepth title=meta.audio.title artist=meta.audio.artist "
    "album=meta.audio.album "
    "pageCount=meta.pdf.pageCount pdfVersion=meta.pdf.version author=meta.pdf.author "
    "creator=meta.pdf.creator encrypted=meta.pdf.encrypted searchable=meta.pdf.searchable "
    "encoding=meta.text.encoding lineCount=meta.text.lineCount wordCount=meta.text.wordCount "
    "charCount=meta.text.charCount lineEnding=meta.text.lineEnding language=meta.text.language "
    "shebang=Shebang "
    "imageFormat=meta.diskImage.format compressedSize=meta.diskImage.compressedSize "
    "diskImageEncrypted=meta.diskImage.encrypted partitionScheme=meta.diskImage.partitionScheme";

const std::string categoryNames =
    "1=imageRaster 2=imageVector 3=video 4=audio 5=text 6=pdf 7=office 8=archive 9=executable "
    "10=certificate 11=font 12=database 13=diskImage 14=config 15=3dmodel 16=ebook 17=contact";

// A "_" stands for a blank.
const std::string languages =
    "py=Python js=JavaScript ts=TypeScript jsx=JSX tsx=TSX rb=Ruby swift=Swift go=Go rs=Rust "
    "java=Java c=C m=Objective-C mm=Objective-C++ cpp=C++ hpp=C++_Header php=PHP sql=SQL lua=Lua "
    "sh=Shell bash=Bash zsh=Zsh h=C/ObjC_Header html=HTML htm=HTML css=CSS xml=XML json=JSON "
    "yaml=YAML yml=YAML toml=TOML md=Markdown tex=LaTeX r=R";

// Every text of up to three small letters and digits.
Texts shortTexts() {
    const std::string letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    Texts texts{""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < 3; ++i) {
        for (const char letter : letters) {
            texts.push_back(texts[i] + letter);
        }
    }
    return texts;
}

TEST(QMMetadataCatalogue, Maps124ExtensionsToTheirCategories) {
    std::set<std::string> seen;
    for (const auto& [number, extensions] : extensionsByCategory) {
        for (const std::string& extension : words(extensions)) {
            EXPECT_EQ(qm_metadataCategoryForExtension(extension), category(number)) << extension;
            EXPECT_TRUE(seen.insert(extension).second) << extension;
        }
    }
    EXPECT_EQ(seen.size(), 124U);
    for (const std::string& text : shortTexts()) {
        if (!seen.contains(text)) {
            EXPECT_EQ(qm_metadataCategoryForExtension(text), QMMetadataCategoryNone) << text;
        }
    }
}

TEST(QMMetadataCatalogue, ListsTheKeysOfEachCategoryInOrder) {
    for (std::int64_t number = -2; number <= 20; ++number) {
        const auto found = keysByCategory.find(number);
        const auto keys = qm_metadataKeysForCategory(category(number));
        EXPECT_EQ(Texts(keys.begin(), keys.end()),
                  found == keysByCategory.end() ? Texts() : words(found->second))
            << number;
    }
}

TEST(QMMetadataCatalogue, Labels46Keys) {
    const auto expected = pairs(labels);
    EXPECT_EQ(expected.size(), 46U);
    for (const auto& [key, label] : expected) {
        EXPECT_EQ(qm_metadataLabelKeyForKey(key), label);
    }
    for (const char* const key : {"", "ISO", "Encoding", "meta.img.dpi", "codecs"}) {
        EXPECT_EQ(qm_metadataLabelKeyForKey(key), std::nullopt) << key;
    }
}

TEST(QMMetadataCatalogue, LabelsExactlyTheKeysOfTheCategories) {
    std::set<std::string> keys;
    for (const auto& [number, list] : keysByCategory) {
        for (const std::string& key : words(list)) {
            EXPECT_TRUE(qm_metadataLabelKeyForKey(key)) << key;
            keys.insert(key);
        }
    }
    EXPECT_EQ(keys.size(), pairs(labels).size());
}

TEST(QMMetadataCatalogue, NamesSeventeenCategories) {
    const auto names = pairs(categoryNames);
    EXPECT_EQ(names.size(), 17U);
    for (const auto& [number, name] : names) {
        EXPECT_EQ(qm_metadataNameKeyForCategory(category(std::stoll(number))), "meta.cat." + name);
    }
    for (const std::int64_t number : {-1, 0, 18}) {
        EXPECT_EQ(qm_metadataNameKeyForCategory(category(number)), "") << number;
    }
}

TEST(QMMetadataCatalogue, Knows33Languages) {
    auto expected = pairs(languages);
    EXPECT_EQ(expected.size(), 33U);
    for (auto& [extension, name] : expected) {
        std::ranges::replace(name, '_', ' ');
        EXPECT_EQ(qm_languageForExtension(extension), name);
    }
    for (const std::string& text : shortTexts()) {
        EXPECT_EQ(qm_languageForExtension(text).has_value(), expected.contains(text)) << text;
    }
}

} // namespace
