// SPDX-License-Identifier: Apache-2.0
#include "platform/Collation.h"

#include "platform/linux/Ascii.h"
#include "platform/linux/Icu.h"
#include "platform/linux/Locale.h"
#include "platform/linux/Utf8.h"

#include <algorithm>
#include <limits>
#include <memory>

namespace platform::Collation {
namespace {

std::unique_ptr<icu::Collator> makeCollator() {
    UErrorCode status = U_ZERO_ERROR;
    const std::string name = localeName("LC_COLLATE");
    // The POSIX locale puts every capital before every small letter; nobody who reads a list
    // without a locale wants that order.
    const auto locale = name == posixLocaleName ? icu::Locale::getRoot()
                                                : icu::Locale::createCanonical(name.c_str());
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(locale, status));
    if (U_FAILURE(status) != 0) {
        return nullptr;
    }
    collator->setStrength(icu::Collator::SECONDARY);
    return collator;
}

// ICU counts in 32 bits.
constexpr std::size_t maximumLength = std::numeric_limits<int32_t>::max() / 4;

icu::StringPiece piece(std::string_view text) {
    const std::string_view head = text.substr(0, maximumLength);
    return {head.data(), static_cast<int32_t>(head.size())};
}

} // namespace

std::weak_ordering localizedCaseInsensitiveCompare(std::string_view first,
                                                   std::string_view second) {
    // Never destroyed: threads may still compare while the process ends.
    static const icu::Collator* const collator = makeCollator().release();
    if (collator == nullptr) {
        return lowercase(first) <=> lowercase(second);
    }
    UErrorCode status = U_ZERO_ERROR;
    const auto result = collator->compareUTF8(piece(first), piece(second), status);
    if (result == UCOL_EQUAL) {
        return std::weak_ordering::equivalent;
    }
    return result == UCOL_LESS ? std::weak_ordering::less : std::weak_ordering::greater;
}

std::string lowercase(std::string_view text) {
    if (std::ranges::all_of(text, isASCII) || text.size() > maximumLength || !isUTF8(text)) {
        return lowercaseASCII(text);
    }
    std::string result;
    icu::UnicodeString::fromUTF8(piece(text)).toLower(icu::Locale::getRoot()).toUTF8String(result);
    return result;
}

} // namespace platform::Collation
