// SPDX-License-Identifier: Apache-2.0
#include "platform/Format.h"
#include "services/QMMetadataField.h"

#include <array>

using platform::PDFDocumentProperties;

namespace {

using Value = std::optional<std::string>;

Value pageCount(const PDFDocumentProperties& document) {
    return platform::format("{}", document.pageCount);
}

Value pdfVersion(const PDFDocumentProperties& document) {
    return document.version
               ? Value(platform::format("{}.{}", document.version->major, document.version->minor))
               : std::nullopt;
}

Value title(const PDFDocumentProperties& document) {
    return document.title;
}

Value author(const PDFDocumentProperties& document) {
    return document.author;
}

Value creator(const PDFDocumentProperties& document) {
    return document.creator;
}

Value encrypted(const PDFDocumentProperties& document) {
    return qm_yesOrNo(document.isEncrypted);
}

Value searchable(const PDFDocumentProperties& document) {
    return document.pageCount == 0 ? std::nullopt
                                   : Value(qm_yesOrNo(document.hasText.value_or(false)));
}

constexpr std::string_view searchableKey = "searchable";
constexpr auto plain = &QMMetadataEntry::entryWithKey;

// In the order of display. A field without a value has no entry.
constexpr std::array<QMMetadataField<PDFDocumentProperties>, 7> fields{{
    {"pageCount", &QMMetadataEntry::primaryEntryWithKey, "meta.pdf.pageCount", pageCount},
    {"pdfVersion", plain, "meta.pdf.version", pdfVersion},
    {"title", plain, "meta.pdf.title", title},
    {"author", plain, "meta.pdf.author", author},
    {"creator", plain, "meta.pdf.creator", creator},
    {"encrypted", plain, "meta.pdf.encrypted", encrypted},
    {searchableKey, plain, "meta.pdf.searchable", searchable},
}};

} // namespace

void QMMetadataService::extractPDFMetadata(const std::string& path, const Keys& enabledKeys,
                                           QMMetadataEntries& into) const {
    const bool wantsText = containsKey(enabledKeys, searchableKey);
    const auto document = m_settings.pdfReader
                              ? m_settings.pdfReader(path, wantsText)
                              : platform::pdfDocumentPropertiesOfFile(path, wantsText);
    if (document) {
        qm_appendFields<PDFDocumentProperties>(fields, *document, enabledKeys, into);
    }
}
