// SPDX-License-Identifier: Apache-2.0
// Reads bytes as a text string of a PDF, and as its header.
#include "fuzz/Fuzzing.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/pdf/PDFVersion.h"
#include "platform/linux/pdf/TextString.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t longest = 40U << 10U;
    const std::string bytes = fuzzing::textOf(data, size);
    const std::string text = platform::pdf::textOfString(bytes);
    fuzzing::require(platform::isUTF8(text) && text.size() <= longest);
    fuzzing::require(text.find('\0') == std::string::npos);
    const auto version = platform::pdf::versionOfHeader(bytes);
    fuzzing::require(version.has_value() == (bytes.find("%PDF-") != std::string::npos));
    fuzzing::require(!version || (version->major >= 0 && version->minor >= 0));
    return 0;
}
