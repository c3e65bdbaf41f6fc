// SPDX-License-Identifier: Apache-2.0
#include "platform/UniformType.h"
#include "tests/unit/support/TypeNames.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <fstream>
#include <map>
#include <optional>
#include <set>
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

std::string lowerCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return text;
}

// ---- Kinds and MIME types ----

const Pairs fixedKinds{
    {"public.folder", "Folder"},       {"public.volume", "Volume"},
    {"public.symlink", "Alias"},       {"com.apple.application-bundle", "Application"},
    {"com.apple.alias-file", "Alias"}, {"public.data", "Document"},
    {"public.stored-url", "Document"}};

TEST(UniformType, SomeKindsHaveFixedWords) {
    for (const auto& [identifier, kind] : fixedKinds) {
        EXPECT_EQ(kindForIdentifier(identifier), kind) << identifier;
        EXPECT_EQ(kindForIdentifier(upperCased(identifier)), kind) << identifier;
    }
}

// By extension.
const Pairs describedKinds{{"txt", "text"},
                           {"zip", "Zip archive"},
                           {"log", "text"},
                           {"gz", "GZip archive"},
                           {"rtf", "rich text (RTF)"},
                           {"tgz", "gzip tar archive"},
                           {"md", "Markdown Text"},
                           {"bz2", "Bzip2 archive"},
                           {"csv", "comma-separated values"},
                           {"tar", "tar archive"},
                           {"tsv", "tab-separated values"},
                           {"xz", "xz compressed archive"},
                           {"json", "JSON"},
                           {"7z", "7-Zip archive"},
                           {"xml", "XML text"},
                           {"jar", "Java archive"},
                           {"yaml", "YAML"},
                           {"yml", "YAML"},
                           {"html", "HTML text"},
                           {"htm", "HTML text"},
                           {"iso", "ISO Disk Image"},
                           {"css", "CSS"},
                           {"pkg", "Installer package archive"},
                           {"js", "JavaScript"},
                           {"pdf", "PDF document"},
                           {"py", "Python script"},
                           {"doc", "Microsoft Word 97-2004 document"},
                           {"rb", "Ruby script"},
                           {"docx", "Office Open XML word processing document"},
                           {"sh", "shell script"},
                           {"xls", "Microsoft Excel 97-2004 worksheet"},
                           {"bash", "Bourne-Again Shell script"},
                           {"xlsx", "Office Open XML spreadsheet"},
                           {"zsh", "Z Shell script"},
                           {"ppt", "Microsoft PowerPoint 97-2004 presentation"},
                           {"pl", "Perl script"},
                           {"pptx", "Office Open XML presentation"},
                           {"php", "PHP script"},
                           {"odt", "Open Document text"},
                           {"c", "C source code"},
                           {"ods", "Open Document spreadsheet"},
                           {"h", "C header code"},
                           {"odp", "Open Document presentation"},
                           {"m", "Objective-C source code"},
                           {"pages", "Pages document"},
                           {"mm", "Objective-C++ source code"},
                           {"epub", "EPUB publication"},
                           {"cpp", "C++ source code"},
                           {"cc", "C++ source code"},
                           {"cxx", "C++ source code"},
                           {"ttf", "TrueType OpenType font"},
                           {"hpp", "C++ header code"},
                           {"hh", "C++ header code"},
                           {"otf", "PostScript OpenType font"},
                           {"java", "Java source code"},
                           {"ttc", "TrueType collection font"},
                           {"swift", "Swift Source Code"},
                           {"p12", "personal information exchange (PKCS#12)"},
                           {"rs", "Rust source code file"},
                           {"cer", "certificate (X.509)"},
                           {"crt", "certificate (X.509)"},
                           {"pem", "certificate (X.509)"},
                           {"r", "Rez source code"},
                           {"plist", "property list"},
                           {"diff", "patch file"},
                           {"patch", "patch file"},
                           {"vcf", "electronic business card"},
                           {"jpg", "JPEG image"},
                           {"jpeg", "JPEG image"},
                           {"ics", "ICS File"},
                           {"png", "PNG image"},
                           {"mp3", "MP3 audio"},
                           {"gif", "GIF image"},
                           {"m4a", "Apple MPEG-4 audio"},
                           {"tif", "TIFF image"},
                           {"tiff", "TIFF image"},
                           {"aac", "AAC audio"},
                           {"bmp", "Windows BMP image"},
                           {"wav", "Waveform audio"},
                           {"webp", "WebP Image"},
                           {"aif", "AIFF audio"},
                           {"aiff", "AIFF audio"},
                           {"heic", "HEIF Image"},
                           {"heif", "HEIF Image"},
                           {"flac", "FLAC audio"},
                           {"ico", "Windows icon image"},
                           {"mid", "MIDI audio"},
                           {"midi", "MIDI audio"},
                           {"icns", "Apple icon image"},
                           {"wma", "Windows media audio"},
                           {"psd", "Adobe Photoshop document"},
                           {"mp4", "MPEG-4 movie"},
                           {"svg", "SVG image"},
                           {"m4v", "Apple MPEG-4 movie"},
                           {"ai", "Adobe Illustrator document"},
                           {"mov", "QuickTime movie"},
                           {"eps", "Encapsulated PostScript"},
                           {"avi", "AVI movie"},
                           {"mpg", "MPEG movie"},
                           {"mpeg", "MPEG movie"},
                           {"exe", "Microsoft Windows application"},
                           {"3gp", "3GPP movie"},
                           {"dll", "Microsoft dynamic link library"},
                           {"ts", "MPEG-2 Transport Stream"},
                           {"o", "object code"},
                           {"webm", "WebM Media"},
                           {"dylib", "Mach-O dynamic library"},
                           {"wmv", "Windows media"},
                           {"class", "Java class"},
                           {"flv", "Flash video"},
                           {"webloc", "web internet location"},
                           {"bin", "MacBinary archive"}};

TEST(UniformType, OtherKindsAreTheDescriptionsOfTheirTypes) {
    EXPECT_EQ(kindForIdentifier("public.unix-executable"), "Unix executable");
    EXPECT_EQ(kindForIdentifier("public.socket"), "item");
    EXPECT_EQ(kindForIdentifier("com.apple.rtfd"), "rich text with attachments (RTFD)");
    for (const auto& [extension, kind] : describedKinds) {
        EXPECT_EQ(kindForIdentifier(fileType(extension)), kind) << extension;
    }
}

TEST(UniformType, MimeTypeIsThePreferredOneWithoutParameters) {
    EXPECT_EQ(mimeType("public.jpeg"), "image/jpeg");
    EXPECT_EQ(mimeType("PUBLIC.JPEG"), "image/jpeg");
    EXPECT_EQ(mimeType("com.apple.iwork.pages.sffpages"), "application/x-iwork-pages-sffpages");
    EXPECT_EQ(mimeType("public.utf8-plain-text"), "text/plain");
    EXPECT_EQ(mimeType("public.folder"), std::nullopt);
    EXPECT_EQ(mimeType("public.image"), std::nullopt);
}

// ---- The whole table ----

struct Row {
    std::string identifier;
    std::vector<std::string> parents;
    std::vector<std::string> extensions;
    std::string mime;
    std::string description;
};

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == separator) {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts == std::vector<std::string>(1) ? std::vector<std::string>() : parts;
}

std::vector<Row> readTable() {
    std::ifstream input(QM_UNIFORM_TYPES_SOURCE);
    std::string line;
    std::getline(input, line);
    std::vector<Row> rows;
    while (std::getline(input, line)) {
        const std::vector<std::string> columns = split(line, '\t');
        rows.push_back({columns.at(0), split(columns.at(1), ','), split(columns.at(2), ','),
                        columns.at(3).substr(0, columns.at(3).find_first_of(",;")), columns.at(4)});
    }
    return rows;
}

/// For each identifier all the types it conforms to, itself included.
std::map<std::string, std::set<std::string>> closureOf(const std::vector<Row>& rows) {
    std::map<std::string, std::set<std::string>> closure;
    for (std::size_t before = 1, after = 0; before != after;) {
        before = after;
        after = 0;
        for (const Row& row : rows) {
            std::set<std::string>& all = closure[row.identifier];
            all.insert(row.identifier);
            for (const std::string& parent : row.parents) {
                all.insert(closure[parent].begin(), closure[parent].end());
            }
            after += all.size();
        }
    }
    return closure;
}

TEST(UniformTypeTable, EveryTypeConformsToItsAncestorsAndToNothingElse) {
    const std::vector<Row> rows = readTable();
    ASSERT_EQ(rows.size(), 364U);
    const auto closure = closureOf(rows);
    ASSERT_EQ(closure.size(), rows.size()) << "a parent that is not declared";
    for (const Row& row : rows) {
        for (const Row& other : rows) {
            const bool expected = closure.at(row.identifier).count(other.identifier) > 0;
            ASSERT_EQ(conformsTo(row.identifier, other.identifier), expected)
                << row.identifier << ' ' << other.identifier;
        }
        EXPECT_TRUE(conformsTo(upperCased(row.identifier), lowerCased(row.identifier)));
    }
}

TEST(UniformTypeTable, EveryExtensionNamesItsFirstTypeForFilesAndForFolders) {
    const std::vector<Row> rows = readTable();
    const auto closure = closureOf(rows);
    std::map<std::string, std::array<std::string, 2>> types;
    for (const Row& row : rows) {
        const std::set<std::string>& all = closure.at(row.identifier);
        for (const std::string& extension : row.extensions) {
            auto& [file, folder] = types[lowerCased(extension)];
            file = file.empty() && all.count("public.data") > 0 ? row.identifier : file;
            folder = folder.empty() && all.count("public.directory") > 0 ? row.identifier : folder;
        }
    }
    ASSERT_EQ(types.size(), 395U);
    for (const auto& [extension, expected] : types) {
        const auto& [file, folder] = expected;
        const std::string found = fileType(upperCased(extension));
        EXPECT_EQ(file.empty() ? found.substr(0, 5) : found, file.empty() ? "dyn.a" : file);
        EXPECT_EQ(folderType(extension), folder.empty() ? "public.folder" : folder) << extension;
    }
}

TEST(UniformTypeTable, EveryTypeHasItsMimeTypeAndKind) {
    const std::map<std::string, std::string> fixed(fixedKinds.begin(), fixedKinds.end());
    for (const Row& row : readTable()) {
        EXPECT_EQ(mimeType(row.identifier).value_or(""), row.mime) << row.identifier;
        const auto kind = fixed.find(row.identifier);
        EXPECT_EQ(kindForIdentifier(row.identifier),
                  kind == fixed.end() ? row.description : kind->second)
            << row.identifier;
    }
}

} // namespace
