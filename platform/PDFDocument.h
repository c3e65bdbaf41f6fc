// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// What a PDF says of itself (ISO 32000-2). Texts are UTF-8 and end before their first NUL.
struct QM_EXPORT PDFDocumentProperties {
    /// Of the header, or of the catalog where that has a later one. Each number is 0 where the file
    /// has none.
    struct Version {
        std::int32_t major = 0; ///< of 1.7 the 1
        std::int32_t minor = 0; ///< of 1.7 the 7

        friend bool operator==(const Version&, const Version&) = default;
    };

    std::uint64_t pageCount = 0;    ///< 0 as well for a document that only a password opens
    std::optional<Version> version; ///< absent when the file says none
    /// Of the document information: absent when the document has none, or none that can be read
    /// without a password; empty when the entry is there and empty.
    std::optional<std::string> title;
    std::optional<std::string> author;  ///< as for `title`
    std::optional<std::string> creator; ///< the program it was written with; as for `title`
    bool isEncrypted = false;           ///< also where no password is needed to read it
    /// Whether the first page has text of any kind, be it a blank; absent unless it was asked for,
    /// for a document without pages, and when the page cannot be read.
    std::optional<bool> hasText;

    friend bool operator==(const PDFDocumentProperties&, const PDFDocumentProperties&) = default;
};

/// Reads the PDF at `path`, by its content alone. nullopt when it cannot be opened, is no regular
/// file, or is no PDF that can be read. Only what is said of the document as a whole is read, and
/// for `wantsText` the first page. Blocks, but not for ever: a file that takes too long counts as
/// one that cannot be read. Any thread.
QM_EXPORT [[nodiscard]] std::optional<PDFDocumentProperties>
pdfDocumentPropertiesOfFile(const std::string& path, bool wantsText);

} // namespace platform
