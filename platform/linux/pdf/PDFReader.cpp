// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/PDFReader.h"

#include "platform/linux/PositionedRead.h"
#include "platform/linux/pdf/DocumentStream.h"
#include "platform/linux/pdf/PDFVersion.h"
#include "platform/linux/pdf/PageText.h"
#include "platform/linux/pdf/PageTree.h"
#include "platform/linux/pdf/TextString.h"

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
std::optional<bool> textOnFirstPage(PDFDoc& document, const PageTree& pages) {
    try {
        auto page = pages.firstPage();
        return page ? hasText(document, *page) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

void addContents(PDFDoc& document, bool wantsText, PDFDocumentProperties& properties) {
    // The trailer's own look-ups fail when the table of objects had to be made anew.
    const Object information = document.getDocInfoNF().fetch(document.getXRef());
    properties.title = textIn(information, "Title");
    properties.author = textIn(information, "Author");
    properties.creator = textIn(information, "Creator");
    const PageTree pages(document);
    properties.pageCount = pages.numberOfPages();
    if (wantsText && properties.pageCount > 0) {
        properties.hasText = textOnFirstPage(document, pages);
    }
}

std::optional<PDFDocumentProperties> propertiesOf(PDFDoc& document, const Version& header,
                                                  bool wantsText) {
    const bool isLocked = !document.isOk() && document.getErrorCode() == errEncrypted;
    if (!document.isOk() && !isLocked) {
        return std::nullopt;
    }
    PDFDocumentProperties properties;
    properties.version = laterOf(header, catalogVersionOf(document));
    properties.isEncrypted = isLocked || document.isEncrypted();
    if (!isLocked) {
        addContents(document, wantsText, properties);
    }
    return properties;
}

} // namespace

void preparePDFReader() {
    // Its tables are left alone: what they say is not needed, and they cannot be opened later.
    globalParams = std::make_unique<GlobalParams>("/dev/null");
    globalParams->setErrQuiet(true);
}

std::optional<PDFDocumentProperties> readPDF(int descriptor, bool wantsText) {
    const auto size = sizeOf(descriptor);
    const auto header = size ? headerVersionOf(descriptor) : std::nullopt;
    if (!header) {
        return std::nullopt;
    }
    try {
        PDFDoc document(new DocumentStream(descriptor, *size));
        return propertiesOf(document, *header, wantsText);
    } catch (const std::exception&) { // no memory
        return std::nullopt;
    }
}

} // namespace platform::pdf
