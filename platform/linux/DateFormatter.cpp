// SPDX-License-Identifier: Apache-2.0
#include "platform/DateFormatter.h"

#include "platform/linux/Icu.h"
#include "platform/linux/Locale.h"

#include <ctime>
#include <mutex>

namespace platform {
namespace {

// The C library knows every form of TZ, and rereads it; ICU knows only names from its own
// database. So the library tells the distance to UTC, and ICU formats wall-clock time as UTC.
std::chrono::seconds distanceFromUTC(Date date) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(date).time_since_epoch();
    const auto time = static_cast<std::time_t>(seconds.count());
    std::tm local{};
    ::tzset();
    if (::localtime_r(&time, &local) == nullptr) {
        return std::chrono::seconds{0};
    }
    return std::chrono::seconds{local.tm_gmtoff};
}

} // namespace

struct DateFormatter::Implementation {
    mutable std::mutex mutex; // ICU's formatters may not be used by two threads at once
    std::unique_ptr<icu::SimpleDateFormat> format;
};

DateFormatter::DateFormatter(std::string_view pattern)
    : m_implementation(std::make_unique<Implementation>()) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::StringPiece text(pattern.data(), static_cast<int32_t>(pattern.size()));
    const auto locale = icu::Locale::createCanonical(localeName("LC_TIME").c_str());
    m_implementation->format =
        std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(text), locale, status);
    if (U_FAILURE(status) != 0) {
        m_implementation->format.reset();
        return;
    }
    m_implementation->format->setTimeZone(*icu::TimeZone::getGMT());
}

DateFormatter::~DateFormatter() = default;

std::string DateFormatter::stringFromDate(Date date) const {
    std::string text;
    const std::lock_guard lock(m_implementation->mutex);
    if (!m_implementation->format) {
        return text;
    }
    const auto wallClock =
        std::chrono::floor<std::chrono::milliseconds>(date) + distanceFromUTC(date);
    icu::UnicodeString formatted;
    m_implementation->format->format(static_cast<double>(wallClock.time_since_epoch().count()),
                                     formatted);
    formatted.toUTF8String(text);
    return text;
}

} // namespace platform
