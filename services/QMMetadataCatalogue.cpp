// SPDX-License-Identifier: Apache-2.0
#include "services/QMMetadataCatalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace {

using Word = std::string_view;
using Words = std::span<const Word>;
using WordPair = std::pair<Word, Word>;

constexpr std::array<Word, 18> imageRasterExtensions{"jpg", "jpeg", "png",  "gif",  "bmp", "tiff",
                                                     "tif", "webp", "heic", "heif", "ico", "raw",
                                                     "cr2", "nef",  "arw",  "dng",  "psd", "xcf"};
constexpr std::array<Word, 17> imageRasterKeys{
    "dimensions",  "colorDepth",   "colorModel", "colorProfile", "dpi",      "hasAlpha",
    "animated",    "camera",       "lens",       "exposure",     "aperture", "iso",
    "focalLength", "dateOriginal", "gps",        "software",     "copyright"};

constexpr std::array<Word, 3> imageVectorExtensions{"svg", "eps", "ai"};

// "ts" is a transport stream here, although TypeScript is among the languages.
constexpr std::array<Word, 12> videoExtensions{"mp4",  "mov", "avi", "mkv",  "wmv", "flv",
                                               "webm", "m4v", "mpg", "mpeg", "3gp", "ts"};
constexpr std::array<Word, 6> videoKeys{"duration",  "dimensions",  "videoCodec",
                                        "frameRate", "audioTracks", "audioCodec"};

constexpr std::array<Word, 13> audioExtensions{"mp3", "aac", "m4a",  "flac", "wav", "aiff", "aif",
                                               "ogg", "wma", "opus", "alac", "mid", "midi"};
constexpr std::array<Word, 8> audioKeys{"duration", "codec", "sampleRate", "channels",
                                        "bitDepth", "title", "artist",     "album"};

constexpr std::array<Word, 37> textExtensions{
    "txt",  "md",    "csv", "json", "xml", "yaml", "yml",  "html", "htm",  "css",
    "js",   "py",    "rb",  "sh",   "c",   "h",    "m",    "mm",   "cpp",  "hpp",
    "java", "swift", "go",  "rs",   "php", "sql",  "log",  "ini",  "conf", "toml",
    "tsx",  "jsx",   "lua", "r",    "tex", "diff", "patch"};
constexpr std::array<Word, 7> textKeys{"encoding",   "lineCount", "wordCount", "charCount",
                                       "lineEnding", "language",  "shebang"};

constexpr std::array<Word, 1> pdfExtensions{"pdf"};
constexpr std::array<Word, 7> pdfKeys{"pageCount", "pdfVersion", "title",     "author",
                                      "creator",   "encrypted",  "searchable"};

constexpr std::array<Word, 13> officeExtensions{"docx",    "doc",     "xlsx", "xls", "pptx",
                                                "ppt",     "odt",     "ods",  "odp", "pages",
                                                "numbers", "keynote", "rtf"};
constexpr std::array<Word, 9> archiveExtensions{"zip", "tar", "gz",  "tgz", "bz2",
                                                "xz",  "7z",  "rar", "jar"};
constexpr std::array<Word, 5> certificateExtensions{"cer", "crt", "pem", "p12", "pub"};
constexpr std::array<Word, 5> fontExtensions{"ttf", "otf", "woff", "woff2", "ttc"};
constexpr std::array<Word, 3> databaseExtensions{"sqlite", "sqlite3", "db"};

constexpr std::array<Word, 3> diskImageExtensions{"dmg", "iso", "img"};
constexpr std::array<Word, 4> diskImageKeys{"imageFormat", "compressedSize", "diskImageEncrypted",
                                            "partitionScheme"};

constexpr std::array<Word, 2> configExtensions{"plist", "entitlements"};

struct Category {
    QMMetadataCategory number;
    Word nameKey;
    Words extensions;
    Words keys;
};

// Every category but "none". Four are reserved: no extension leads to them.
constexpr std::array<Category, 17> categories{{
    {QMMetadataCategoryImageRaster, "meta.cat.imageRaster", imageRasterExtensions, imageRasterKeys},
    {QMMetadataCategoryImageVector, "meta.cat.imageVector", imageVectorExtensions, {}},
    {QMMetadataCategoryVideo, "meta.cat.video", videoExtensions, videoKeys},
    {QMMetadataCategoryAudio, "meta.cat.audio", audioExtensions, audioKeys},
    {QMMetadataCategoryText, "meta.cat.text", textExtensions, textKeys},
    {QMMetadataCategoryPDF, "meta.cat.pdf", pdfExtensions, pdfKeys},
    {QMMetadataCategoryOffice, "meta.cat.office", officeExtensions, {}},
    {QMMetadataCategoryArchive, "meta.cat.archive", archiveExtensions, {}},
    {QMMetadataCategoryExecutable, "meta.cat.executable", {}, {}},
    {QMMetadataCategoryCertificate, "meta.cat.certificate", certificateExtensions, {}},
    {QMMetadataCategoryFont, "meta.cat.font", fontExtensions, {}},
    {QMMetadataCategoryDatabase, "meta.cat.database", databaseExtensions, {}},
    {QMMetadataCategoryDiskImage, "meta.cat.diskImage", diskImageExtensions, diskImageKeys},
    {QMMetadataCategoryConfig, "meta.cat.config", configExtensions, {}},
    {QMMetadataCategory3DModel, "meta.cat.3dmodel", {}, {}},
    {QMMetadataCategoryEbook, "meta.cat.ebook", {}, {}},
    {QMMetadataCategoryContact, "meta.cat.contact", {}, {}},
}};

// One label for a key that several categories share. "ISO" and "Shebang" can be shown as they are.
constexpr std::array<WordPair, 46> labels{{
    {"dimensions", "meta.img.dimensions"},
    {"colorDepth", "meta.img.colorDepth"},
    {"colorModel", "meta.img.colorModel"},
    {"colorProfile", "meta.img.colorProfile"},
    {"dpi", "meta.img.dpi"},
    {"hasAlpha", "meta.img.hasAlpha"},
    {"animated", "meta.img.animated"},
    {"camera", "meta.img.camera"},
    {"lens", "meta.img.lens"},
    {"exposure", "meta.img.exposure"},
    {"aperture", "meta.img.aperture"},
    {"iso", "ISO"},
    {"focalLength", "meta.img.focalLength"},
    {"dateOriginal", "meta.img.dateOriginal"},
    {"gps", "meta.img.gps"},
    {"software", "meta.img.software"},
    {"copyright", "meta.img.copyright"},
    {"duration", "meta.video.duration"},
    {"videoCodec", "meta.video.codec"},
    {"frameRate", "meta.video.frameRate"},
    {"audioTracks", "meta.video.audioTracks"},
    {"audioCodec", "meta.video.audioCodec"},
    {"codec", "meta.audio.codec"},
    {"sampleRate", "meta.audio.sampleRate"},
    {"channels", "meta.audio.channels"},
    {"bitDepth", "meta.audio.bitDepth"},
    {"title", "meta.audio.title"},
    {"artist", "meta.audio.artist"},
    {"album", "meta.audio.album"},
    {"pageCount", "meta.pdf.pageCount"},
    {"pdfVersion", "meta.pdf.version"},
    {"author", "meta.pdf.author"},
    {"creator", "meta.pdf.creator"},
    {"encrypted", "meta.pdf.encrypted"},
    {"searchable", "meta.pdf.searchable"},
    {"encoding", "meta.text.encoding"},
    {"lineCount", "meta.text.lineCount"},
    {"wordCount", "meta.text.wordCount"},
    {"charCount", "meta.text.charCount"},
    {"lineEnding", "meta.text.lineEnding"},
    {"language", "meta.text.language"},
    {"shebang", "Shebang"},
    {"imageFormat", "meta.diskImage.format"},
    {"compressedSize", "meta.diskImage.compressedSize"},
    {"diskImageEncrypted", "meta.diskImage.encrypted"},
    {"partitionScheme", "meta.diskImage.partitionScheme"},
}};

constexpr std::array<WordPair, 33> languages{{
    {"py", "Python"},        {"js", "JavaScript"}, {"ts", "TypeScript"},
    {"jsx", "JSX"},          {"tsx", "TSX"},       {"rb", "Ruby"},
    {"swift", "Swift"},      {"go", "Go"},         {"rs", "Rust"},
    {"java", "Java"},        {"c", "C"},           {"m", "Objective-C"},
    {"mm", "Objective-C++"}, {"cpp", "C++"},       {"hpp", "C++ Header"},
    {"php", "PHP"},          {"sql", "SQL"},       {"lua", "Lua"},
    {"sh", "Shell"},         {"bash", "Bash"},     {"zsh", "Zsh"},
    {"h", "C/ObjC Header"},  {"html", "HTML"},     {"htm", "HTML"},
    {"css", "CSS"},          {"xml", "XML"},       {"json", "JSON"},
    {"yaml", "YAML"},        {"yml", "YAML"},      {"toml", "TOML"},
    {"md", "Markdown"},      {"tex", "LaTeX"},     {"r", "R"},
}};

const Category* find(QMMetadataCategory number) {
    const auto* const found = std::ranges::find(categories, number, &Category::number);
    return found == categories.end() ? nullptr : found;
}

template <std::size_t size>
std::optional<Word> find(const std::array<WordPair, size>& table, Word word) {
    const auto* const found = std::ranges::find(table, word, &WordPair::first);
    return found == table.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

QMMetadataCategory qm_metadataCategoryForExtension(std::string_view extension) {
    const auto* const found = std::ranges::find_if(categories, [extension](const Category& one) {
        return std::ranges::find(one.extensions, extension) != one.extensions.end();
    });
    return found == categories.end() ? QMMetadataCategoryNone : found->number;
}

std::string_view qm_metadataNameKeyForCategory(QMMetadataCategory category) {
    const Category* const found = find(category);
    return found == nullptr ? std::string_view() : found->nameKey;
}

std::span<const std::string_view> qm_metadataKeysForCategory(QMMetadataCategory category) {
    const Category* const found = find(category);
    return found == nullptr ? Words() : found->keys;
}

std::optional<std::string_view> qm_metadataLabelKeyForKey(std::string_view key) {
    return find(labels, key);
}

std::optional<std::string_view> qm_languageForExtension(std::string_view lowercasedExtension) {
    return find(languages, lowercasedExtension);
}
