// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/PDFVersion.h"

#include <charconv>
#include <tuple>

namespace platform::pdf {
namespace {

// The number at the beginning of `text`, which is left without it; nullopt when there is none.
std::optional<std::int32_t> takeNumber(std::string_view& text) {
    std::int32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || number < 0) {
        return std::nullopt;
    }
    text = text.substr(static_cast<std::size_t>(rest - text.data()));
    return number;
}

} // namespace

PDFDocumentProperties::Version versionIn(std::string_view text) {
    const auto major = takeNumber(text);
    if (!major || !text.starts_with('.')) {
        return {};
    }
    text.remove_prefix(1);
    const auto minor = takeNumber(text);
    return minor ? PDFDocumentProperties::Version{*major, *minor}
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
