// SPDX-License-Identifier: Apache-2.0
#include "services/QMTextSample.h"

#include "foundation/QMFileHandle.h"

#include <algorithm>
#include <utility>

namespace Text = platform::Text;

std::optional<QMTextSample> QMTextSample::fromFile(platform::FileHandle& file) {
    const auto bytes = qm_readDataUpToLength(file, maximumLength);
    // A failure behind the first bytes shows only when the next ones are read.
    if (!bytes || (bytes->size() < maximumLength && !qm_readDataUpToLength(file, std::size_t{1}))) {
        return std::nullopt;
    }
    QMTextSample sample = decoding(*bytes);
    sample.isTruncated = file.size() > maximumLength;
    return sample;
}

QMTextSample QMTextSample::decoding(platform::DataView bytes) {
    if (auto text = Text::fromUTF8(bytes)) {
        return {*std::move(text), Text::Encoding::UTF8};
    }
    return {Text::fromISOLatin1(bytes), Text::Encoding::ISOLatin1};
}

std::size_t qm_lineCount(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
}

std::string_view qm_lineEnding(std::string_view text) {
    const auto first = text.find('\r');
    if (first == std::string_view::npos) {
        return "LF";
    }
    return text.find("\r\n", first) == std::string_view::npos ? "CR" : "CRLF";
}

std::optional<std::string_view> qm_shebangLine(std::string_view text) {
    return text.starts_with("#!") ? std::optional(text.substr(0, text.find('\n'))) : std::nullopt;
}
