// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/PDFReader.h"

#include "platform/linux/PositionedRead.h"
#include "platform/linux/pdf/DocumentStream.h"
#include "platform/linux/pdf/Excerpt.h"
#include "platform/linux/pdf/PDFVersion.h"
#include "platform/linux/pdf/PageText.h"
#include "platform/linux/pdf/PageTree.h"
#include "platform/linux/pdf/TextString.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>

#include <sys/stat.h>

namespace platform::pdf {
namespace {

using Version = PDFDocumentProperties::Version;

// nullopt for what is no regular file.
std::optional<Goffset> sizeOf(int descriptor) {
    struct stat status {};
    const bool isFile = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? std::optional<Goffset>(status.st_size) : std::nullopt;
}

std::optional<Version> headerVersionOf(int descriptor) {
    std::array<char, headerSize> start{};
    const std::size_t count = readAt(descriptor, 0, std::as_writable_bytes(std::span(start)));
    return versionOfHeader({start.data(), count});
}

// What an update that only added to the file says of the version.
Version catalogVersionOf(PDFDoc& document) {
    const Object catalog = document.getXRef()->getCatalog();
    const Object version = catalog.isDict() ? catalog.dictLookup("Version") : Object(objNull);
    return version.isName() ? versionIn(version.getName()) : Version();
}

std::optional<std::string> textIn(const Object& information, const char* key) {
    const Object value = information.isDict() ? information.dictLookup(key) : Object(objNull);
    return value.isString() ? std::optional(textOfString(value.getString()->toStr()))
                            : std::nullopt;
}

// A page that there is no memory for costs no more than what is known of its text.
std::optional<bool> textOn(PDFDoc& document, std::optional<PageParts>& page) {
    try {
        return page ? hasText(document, *page) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

void addInformation(PDFDoc& document, PDFDocumentProperties& properties) {
    // The trailer's own look-ups fail when the table of objects had to be made anew.
    const Object information = document.getDocInfoNF().fetch(document.getXRef());
    properties.title = textIn(information, "Title");
    properties.author = textIn(information, "Author");
    properties.creator = textIn(information, "Creator");
}

// False for an excerpt in which the pages cannot be told.
bool addPages(PDFDoc& document, const Excerpt* excerpt, bool wantsText,
              PDFDocumentProperties& properties) {
    const PageTree pages(document, excerpt);
    const auto count = pages.numberOfPages();
    properties.pageCount = count.value_or(0);
    if (wantsText && properties.pageCount > 0) {
        auto page = pages.firstPage();
        if (!page && excerpt != nullptr) {
            return false;
        }
        properties.hasText = textOn(document, page);
    }
    return count.has_value();
}

std::optional<PDFDocumentProperties> propertiesOf(PDFDoc& document, const Excerpt* excerpt,
                                                  const Version& header, bool wantsText) {
    const bool isLocked = !document.isOk() && document.getErrorCode() == errEncrypted;
    if (!document.isOk() && !isLocked) {
        return std::nullopt;
    }
    PDFDocumentProperties properties;
    properties.version = laterOf(header, catalogVersionOf(document));
    properties.isEncrypted = isLocked || document.isEncrypted();
    if (isLocked) {
        return properties;
    }
    addInformation(document, properties);
    return addPages(document, excerpt, wantsText, properties) ? std::optional(properties)
                                                              : std::nullopt;
}

/// A regular file that begins like a PDF.
struct DocumentFile {
    int descriptor;
    Goffset size;
    Version header;
};

std::optional<DocumentFile> documentFile(int descriptor) {
    const auto size = sizeOf(descriptor);
    const auto header = size ? headerVersionOf(descriptor) : std::nullopt;
    return header ? std::optional(DocumentFile{descriptor, *size, *header}) : std::nullopt;
}

std::optional<PDFDocumentProperties> readWhole(const DocumentFile& file, bool wantsText) {
    PDFDoc document(new DocumentStream(file.descriptor, file.size));
    return propertiesOf(document, nullptr, file.header, wantsText);
}

// Whether everything that was looked up in the excerpt is in it.
bool isComplete(PDFDoc& document, const Excerpt& excerpt) {
    const auto room = static_cast<std::uint64_t>(std::max(document.getXRef()->getNumObjects(), 0));
    return room <= excerpt.endOfNumbers;
}

std::optional<PDFDocumentProperties> readExcerpt(const DocumentFile& file, bool wantsText,
                                                 std::uint64_t fewestObjects) {
    const auto excerpt =
        excerptOf(file.descriptor, static_cast<std::uint64_t>(file.size), wantsText, fewestObjects);
    if (!excerpt) {
        return std::nullopt;
    }
    // A table made anew takes the objects of the excerpt for those of the document.
    bool isRepaired = false;
    PDFDoc document(new DocumentStream(file.descriptor, file.size, excerpt->update), {}, {},
                    nullptr, [&isRepaired] { isRepaired = true; });
    auto properties = propertiesOf(document, &*excerpt, file.header, wantsText);
    return properties && !isRepaired && isComplete(document, *excerpt) ? properties : std::nullopt;
}

// Answers nothing where there is no file, nor where `read` throws, which it does for want of
// memory.
std::optional<PDFDocumentProperties>
readWith(const auto& read, const std::optional<DocumentFile>& file, const auto&... arguments) {
    try {
        return file ? read(*file, arguments...) : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

void preparePDFReader() {
    // Its tables are left alone: what they say is not needed, and they cannot be opened later.
    globalParams = std::make_unique<GlobalParams>("/dev/null");
    globalParams->setErrQuiet(true);
}

std::optional<PDFDocumentProperties> readPDF(int descriptor, bool wantsText) {
    const auto file = documentFile(descriptor);
    auto properties = readWith(readExcerpt, file, wantsText, fewestObjectsForExcerpt);
    return properties ? properties : readWith(readWhole, file, wantsText);
}

std::optional<PDFDocumentProperties> readExcerptOfPDF(int descriptor, bool wantsText,
                                                      std::uint64_t fewestObjects) {
    return readWith(readExcerpt, documentFile(descriptor), wantsText, fewestObjects);
}

std::optional<PDFDocumentProperties> readWholePDF(int descriptor, bool wantsText) {
    return readWith(readWhole, documentFile(descriptor), wantsText);
}

} // namespace platform::pdf
