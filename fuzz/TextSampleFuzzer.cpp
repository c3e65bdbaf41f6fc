// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "platform/linux/Utf8.h"
#include "services/QMTextSample.h"

namespace {

using fuzzing::require;
namespace Text = platform::Text;

/// Every byte of Latin 1 is one unit; characters of UTF-8 take at most as many units as bytes.
void checkDecoding(const QMTextSample& sample, const std::string& bytes) {
    require(platform::isUTF8(sample.text));
    const std::size_t units = Text::lengthInUTF16(sample.text);
    if (sample.encoding == Text::Encoding::UTF8) {
        require(sample.text == bytes && units <= bytes.size());
    } else {
        require(!platform::isUTF8(bytes) && units == bytes.size());
    }
}

void checkLines(const std::string& text) {
    require(qm_lineCount(text) == fuzzing::split(text, '\n').size());
    const bool hasReturn = text.find('\r') != std::string::npos;
    const bool hasPair = text.find("\r\n") != std::string::npos;
    require(qm_lineEnding(text) == (hasPair ? "CRLF" : hasReturn ? "CR" : "LF"));
    const auto shebang = qm_shebangLine(text);
    require(shebang.has_value() == text.starts_with("#!"));
    require(!shebang || *shebang == fuzzing::split(text, '\n').front());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = fuzzing::textOf(data, size);
    const QMTextSample sample = QMTextSample::decoding(platform::bytesOf(bytes));
    checkDecoding(sample, bytes);
    checkLines(sample.text);
    require(Text::wordCount(sample.text).value_or(0) <= sample.text.size());
    require(Text::wordCount(bytes).has_value());
    return 0;
}
