// SPDX-License-Identifier: Apache-2.0
#include "foundation/QMString.h"
#include "platform/FileHandle.h"
#include "platform/Format.h"
#include "services/QMMetadataField.h"
#include "services/QMTextSample.h"

#include <array>

namespace Text = platform::Text;

namespace {

struct TextFile {
    std::string path;
    QMTextSample sample;
};

using Value = std::optional<std::string>;

// What was counted in a part of the file can only be more in the whole.
Value countText(const TextFile& file, std::size_t count) {
    return file.sample.isTruncated ? platform::format("~{}+", count)
                                   : platform::format("{}", count);
}

Value encoding(const TextFile& file) {
    return Text::localizedNameOfEncoding(file.sample.encoding);
}

Value lineCount(const TextFile& file) {
    return countText(file, qm_lineCount(file.sample.text));
}

Value charCount(const TextFile& file) {
    return countText(file, Text::lengthInUTF16(file.sample.text));
}

Value wordCount(const TextFile& file) {
    const auto count = Text::wordCount(file.sample.text);
    return count ? countText(file, *count) : std::nullopt;
}

Value lineEnding(const TextFile& file) {
    return std::string(qm_lineEnding(file.sample.text));
}

Value language(const TextFile& file) {
    return Value(
        QMMetadataService::programmingLanguageForExtension(qm_pathExtensionLowercased(file.path)));
}

Value shebang(const TextFile& file) {
    return Value(qm_shebangLine(file.sample.text));
}

// In the order of display. A field without a value has no entry.
constexpr std::array<QMMetadataField<TextFile>, 7> fields{{
    {"encoding", &QMMetadataEntry::entryWithKey, "meta.text.encoding", encoding},
    {"lineCount", &QMMetadataEntry::primaryEntryWithKey, "meta.text.lineCount", lineCount},
    {"charCount", &QMMetadataEntry::entryWithKey, "meta.text.charCount", charCount},
    {"wordCount", &QMMetadataEntry::entryWithKey, "meta.text.wordCount", wordCount},
    {"lineEnding", &QMMetadataEntry::entryWithKey, "meta.text.lineEnding", lineEnding},
    {"language", &QMMetadataEntry::primaryEntryWithKey, "meta.text.language", language},
    {"shebang", &QMMetadataEntry::entryWithKey, nullptr, shebang, "Shebang"},
}};

std::optional<TextFile> textFileAtPath(const std::string& path) {
    auto handle = platform::FileHandle::forReadingRegularFileAtPath(path);
    auto sample = handle ? QMTextSample::fromFile(*handle) : std::nullopt;
    return sample ? std::optional(TextFile{path, *std::move(sample)}) : std::nullopt;
}

} // namespace

void QMMetadataService::extractTextMetadata(const std::string& path, const Keys& enabledKeys,
                                            QMMetadataEntries& into) const {
    const auto file = textFileAtPath(path);
    if (!file) {
        return;
    }
    qm_appendFields<TextFile>(fields, *file, enabledKeys, into);
}
