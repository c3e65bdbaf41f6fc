// SPDX-License-Identifier: Apache-2.0
// Reads bytes behind a header as a PDF, with and without looking for text.
#include "fuzz/Fuzzing.h"
#include "platform/linux/pdf/PDFReader.h"
#include "tests/unit/support/MemoryFile.h"

#include <limits>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using fuzzing::require;
    static const bool isPrepared = (platform::pdf::preparePDFReader(), true);
    require(isPrepared);
    const MemoryFile file(std::string("%PDF-1.4\n").append(fuzzing::textOf(data, size)));
    auto searched = platform::pdf::readPDF(file.descriptor(), true);
    const auto document = platform::pdf::readPDF(file.descriptor(), false);
    require(searched.has_value() == document.has_value());
    if (!document) {
        return 0;
    }
    require(document->pageCount <= std::numeric_limits<std::int32_t>::max());
    require(document->version && document->version->major >= 1 && document->version->minor >= 0);
    require(!document->hasText && (document->pageCount > 0 || !searched->hasText));
    searched->hasText.reset();
    require(searched == document);
    return 0;
}
