// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Locale.h"

#include "platform/linux/Environment.h"
#include "platform/linux/Icu.h"

namespace platform {
namespace {

std::string separatorOf(const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::DecimalFormatSymbols symbols(icu::Locale::createCanonical(locale.c_str()), status);
    std::string text;
    if (U_SUCCESS(status) != 0) {
        symbols.getConstSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol)
            .toUTF8String(text);
    }
    return text.empty() ? "." : text;
}

} // namespace

std::string localeName(const char* category) {
    std::string_view name;
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        name = environmentVariable(variable);
        if (!name.empty()) {
            break;
        }
    }
    name = name.substr(0, name.find_first_of(".@"));
    const bool isPosix = name.empty() || name == "C" || name == "POSIX";
    return std::string(isPosix ? posixLocaleName : name);
}

std::string_view decimalSeparator() {
    // Never destroyed: threads may still ask while the process ends.
    static const std::string& separator = *new std::string(separatorOf(localeName("LC_NUMERIC")));
    return separator;
}

} // namespace platform
