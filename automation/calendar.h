#pragma once

#include <optional>

#include "automation/date.h"
#include "automation/text.h"

namespace vantlo {

/// A date taken apart: proleptic Gregorian calendar, 24-hour clock, whole seconds.
struct DateParts {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;

    friend constexpr bool operator==(const DateParts&, const DateParts&) = default;
};

/// Takes a date apart, rounded to the nearest second.
/// Errors   invalid_call outside the years 100 to 9999.
DateParts parts_of(Date date);

/// Puts a date together.
/// Errors   invalid_call if a part is out of range or the day does not exist.
Date date_of(const DateParts& parts);

/// The ordinary text of a date, one fixed form whatever the locale: `yyyy-MM-dd HH:mm:ss`; without the time at midnight,
/// without the date on day 0 (a time alone), and `00:00:00` for the zero date.
Text ordinary_text(Date date);

/// Reads a text as a date: what ordinary_text writes, years of four digits, parts of one or two; `/` serves as `-`,
/// seconds may be missing, a fraction of a second is dropped.
/// Returns  nothing if the text is no date.
std::optional<Date> date_from_text(TextView text);

// The fixed formats of SQL date literals.
Text format_date_time(Date date);  // yyyy-MM-dd HH:mm:ss
Text format_date(Date date);       // yyyy-MM-dd
Text format_month(Date date);      // yyyy-MM
Text format_time(Date date);       // HH:mm:ss

}  // namespace vantlo
