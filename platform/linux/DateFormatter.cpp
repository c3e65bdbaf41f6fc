// SPDX-License-Identifier: Apache-2.0
#include "platform/DateFormatter.h"

#include "platform/linux/Icu.h"
#include "platform/linux/Locale.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <new>
#include <utility>

namespace platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// The C library knows every form of TZ, and rereads it; ICU knows only names from its own
// database. So the library tells the distance to UTC, and ICU formats wall-clock time as UTC.
seconds distanceFromUTC(Date date) {
    const auto count = std::chrono::floor<seconds>(date).time_since_epoch();
    const auto time = static_cast<std::time_t>(count.count());
    std::tm local{};
    ::tzset();
    if (::localtime_r(&time, &local) == nullptr) {
        return seconds{0};
    }
    return seconds{local.tm_gmtoff};
}

// The moment at which clocks show `wallClock`, the first one if there are two. nullopt when they
// never do. No zone is a day or more away from UTC, so a day earlier and a day later are on either
// side of any change in between.
std::optional<Date> momentOf(Date wallClock) {
    for (const std::chrono::days day : {std::chrono::days{-1}, std::chrono::days{1}}) {
        const seconds distance = distanceFromUTC(wallClock + day);
        if (distanceFromUTC(wallClock - distance) == distance) {
            return wallClock - distance;
        }
    }
    return std::nullopt;
}

// nullopt for what a Date, or one a few days away, does not reach.
std::optional<Date> dateOf(UDate sinceEpoch) {
    constexpr auto reach = std::chrono::floor<std::chrono::days>(Date::max().time_since_epoch()) -
                           std::chrono::days{3};
    constexpr auto limit = static_cast<UDate>(milliseconds(reach).count());
    return sinceEpoch >= -limit && sinceEpoch <= limit
               ? std::optional(Date(milliseconds(static_cast<std::int64_t>(sinceEpoch))))
               : std::nullopt;
}

icu::UnicodeString utf16(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

icu::Locale usersLocale() {
    return icu::Locale::createCanonical(localeName("LC_TIME").c_str());
}

// What stands between date and time where macOS does not do as CLDR does.
const char16_t* joinerOf(const icu::Locale& locale) {
    constexpr std::array<std::pair<std::string_view, const char16_t*>, 3> joiners{{
        {"en", u" 'at' "},
        {"fr", u" 'à' "},
        {"nl", u", "},
    }};
    const auto* const found = std::ranges::find(joiners, std::string_view(locale.getLanguage()),
                                                [](const auto& joiner) { return joiner.first; });
    return found == joiners.end() ? nullptr : found->second;
}

using Format = std::unique_ptr<icu::DateFormat>;

icu::UnicodeString patternOf(const Format& format) {
    icu::UnicodeString pattern;
    if (const auto* const simple = dynamic_cast<const icu::SimpleDateFormat*>(format.get())) {
        simple->toPattern(pattern);
    }
    return pattern;
}

icu::UnicodeString mediumDateAndShortTimePattern(const icu::Locale& locale) {
    constexpr auto date = icu::DateFormat::kMedium;
    constexpr auto time = icu::DateFormat::kShort;
    if (const char16_t* const joiner = joinerOf(locale)) {
        return patternOf(Format(icu::DateFormat::createDateInstance(date, locale))) + joiner +
               patternOf(Format(icu::DateFormat::createTimeInstance(time, locale)));
    }
    return patternOf(Format(icu::DateFormat::createDateTimeInstance(date, time, locale)));
}

} // namespace

struct DateFormatter::Implementation {
    // It takes types of ICU, which nobody is to link against through us.
    QM_HIDDEN Implementation(const icu::UnicodeString& pattern, const icu::Locale& locale);

    mutable std::mutex mutex; // ICU's formatters may not be used by two threads at once
    std::unique_ptr<icu::SimpleDateFormat> format;
};

DateFormatter::Implementation::Implementation(const icu::UnicodeString& pattern,
                                              const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
    if (status == U_MEMORY_ALLOCATION_ERROR) {
        throw std::bad_alloc();
    }
    if (U_FAILURE(status) != 0) {
        format.reset();
        return;
    }
    format->setTimeZone(*icu::TimeZone::getGMT());
    format->setLenient(false);
}

DateFormatter::DateFormatter(std::string_view pattern)
    : DateFormatter(std::make_unique<Implementation>(utf16(pattern), usersLocale())) {}

DateFormatter::DateFormatter(std::string_view pattern, const std::string& locale)
    : DateFormatter(std::make_unique<Implementation>(
          utf16(pattern), icu::Locale::createCanonical(locale.c_str()))) {}

DateFormatter::DateFormatter(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)) {}

DateFormatter DateFormatter::mediumDateAndShortTime() {
    const icu::Locale locale = usersLocale();
    return DateFormatter(
        std::make_unique<Implementation>(mediumDateAndShortTimePattern(locale), locale));
}

DateFormatter::~DateFormatter() = default;

std::string DateFormatter::stringFromDate(Date date) const {
    std::string text;
    const std::lock_guard lock(m_implementation->mutex);
    if (!m_implementation->format) {
        return text;
    }
    const auto wallClock = std::chrono::floor<milliseconds>(date) + distanceFromUTC(date);
    icu::UnicodeString formatted;
    m_implementation->format->format(static_cast<double>(wallClock.time_since_epoch().count()),
                                     formatted);
    formatted.toUTF8String(text);
    return text;
}

std::optional<Date> DateFormatter::dateFromString(std::string_view text) const {
    // No date is anywhere near as long.
    constexpr std::size_t longest = 1024;
    if (text.size() > longest || !m_implementation->format) {
        return std::nullopt;
    }
    const icu::UnicodeString whole = utf16(text);
    icu::ParsePosition end(0);
    UDate sinceEpoch = 0;
    {
        const std::lock_guard lock(m_implementation->mutex);
        sinceEpoch = m_implementation->format->parse(whole, end);
    }
    if (end.getIndex() == 0 || end.getIndex() != whole.length()) {
        return std::nullopt;
    }
    const auto wallClock = dateOf(sinceEpoch);
    return wallClock ? momentOf(*wallClock) : std::nullopt;
}

} // namespace platform
