// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/PDFVersion.h"

#include "platform/linux/TextPieces.h"

#include <tuple>

namespace platform::pdf {

PDFDocumentProperties::Version versionIn(std::string_view text) {
    const auto major = takeNumber<std::int32_t>(text);
    if (!major || *major < 0 || !text.starts_with('.')) {
        return {};
    }
    text.remove_prefix(1);
    const auto minor = takeNumber<std::int32_t>(text);
    return minor && *minor >= 0 ? PDFDocumentProperties::Version{*major, *minor}
                                : PDFDocumentProperties::Version();
}

PDFDocumentProperties::Version laterOf(const PDFDocumentProperties::Version& one,
                                       const PDFDocumentProperties::Version& other) {
    return std::tie(one.major, one.minor) < std::tie(other.major, other.minor) ? other : one;
}

std::optional<PDFDocumentProperties::Version> versionOfHeader(std::string_view firstBytes) {
    constexpr std::string_view mark = "%PDF-";
    const auto place = firstBytes.find(mark);
    return place == std::string_view::npos
               ? std::nullopt
               : std::optional(versionIn(firstBytes.substr(place + mark.size())));
}

} // namespace platform::pdf
