// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Export.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// A moment in time: microseconds since 1970-01-01 00:00:00 UTC, without leap seconds. Reaches
/// 290,000 years in both directions.
using Date = std::chrono::sys_time<std::chrono::microseconds>;

/// Writes and reads dates in the user's time zone, by a fixed pattern or by the customs of a
/// locale, whose digits and calendar they have. The user's locale is the one in force when the
/// formatter is made; a change of the time zone (TZ, or the system's setting) is seen by the next
/// call. Any thread.
class QM_EXPORT DateFormatter {
public:
    /// `pattern` is a date pattern of Unicode TR 35, for example "yyyy-MM-dd HH:mm:ss". It may not
    /// hold fields that name the time zone. In the user's locale.
    explicit DateFormatter(std::string_view pattern);
    /// The same in `locale`, an identifier of TR 35: "en_US_POSIX", whose customs never change.
    DateFormatter(std::string_view pattern, const std::string& locale);
    /// The date in medium length and the time without seconds, as the user's locale has them:
    /// "14.07.2023, 18:30". The customs are those of Unicode's CLDR, but where macOS joins date and
    /// time in another way, theirs: "Jul 14, 2023 at 6:30 PM", where the blank before "PM" is
    /// U+202F.
    [[nodiscard]] static DateFormatter mediumDateAndShortTime();
    DateFormatter(const DateFormatter&) = delete;
    DateFormatter& operator=(const DateFormatter&) = delete;
    DateFormatter(DateFormatter&&) = delete;
    DateFormatter& operator=(DateFormatter&&) = delete;
    ~DateFormatter();

    /// The date as UTF-8 text; empty when no formatter could be made of the pattern and the locale.
    [[nodiscard]] std::string stringFromDate(Date date) const;

    /// The moment that `text`, UTF-8, names; the text may come from anywhere. nullopt when it is
    /// not all of a date by the pattern and nothing else, when a field has fewer digits than the
    /// pattern or is out of its range, as the month is in "2023:13:01", for a time that the zone's
    /// clocks skip, and beyond what a `Date` reaches. A year may have any number of digits, digits
    /// may be those of any script, and blanks in front of a field do not matter.
    [[nodiscard]] std::optional<Date> dateFromString(std::string_view text) const;

private:
    struct Implementation;
    explicit DateFormatter(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> m_implementation;
};

} // namespace platform
