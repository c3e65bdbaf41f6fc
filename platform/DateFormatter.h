// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

/// A moment in time: microseconds since 1970-01-01 00:00:00 UTC, without leap seconds. Reaches
/// 290,000 years in both directions.
using Date = std::chrono::sys_time<std::chrono::microseconds>;

/// Writes dates by a fixed pattern in the user's locale and time zone: digits and calendar are
/// the locale's. The locale is the one in force when the formatter is made; a change of the time
/// zone (TZ, or the system's setting) is seen by the next call. Any thread.
class DateFormatter {
public:
    /// `pattern` is a date pattern of Unicode TR 35, for example "yyyy-MM-dd HH:mm:ss". It may not
    /// hold fields that name the time zone.
    explicit DateFormatter(std::string_view pattern);
    DateFormatter(const DateFormatter&) = delete;
    DateFormatter& operator=(const DateFormatter&) = delete;
    DateFormatter(DateFormatter&&) = delete;
    DateFormatter& operator=(DateFormatter&&) = delete;
    ~DateFormatter();

    /// The date as UTF-8 text.
    [[nodiscard]] std::string stringFromDate(Date date) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

} // namespace platform
