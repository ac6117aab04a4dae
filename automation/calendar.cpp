#include "automation/calendar.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>

#include "automation/error.h"

namespace vantlo {

namespace {

namespace chrono = std::chrono;
using namespace std::chrono_literals;

constexpr int seconds_a_day = 86400;
constexpr chrono::sys_days day_zero = chrono::sys_days(1899y / chrono::December / 30);

// The day number of a calendar day.
constexpr int day_number(chrono::sys_days day) { return static_cast<int>((day - day_zero).count()); }

constexpr int first_day = day_number(100y / chrono::January / 1);
constexpr int last_day = day_number(9999y / chrono::December / 31);
static_assert(first_day == -657434 && last_day == 2958465);

constexpr bool is_in(int value, int first, int last) { return value >= first && value <= last; }

std::optional<Date> date_if_valid(const DateParts& parts) {
    if (!is_in(parts.year, 100, 9999) || !is_in(parts.month, 1, 12) || !is_in(parts.day, 1, 31) ||
        !is_in(parts.hour, 0, 23) || !is_in(parts.minute, 0, 59) || !is_in(parts.second, 0, 59)) {
        return std::nullopt;
    }
    const chrono::year_month_day calendar(chrono::year(parts.year), chrono::month(static_cast<unsigned>(parts.month)),
                                          chrono::day(static_cast<unsigned>(parts.day)));
    if (!calendar.ok()) return std::nullopt;

    const double day = day_number(calendar);
    const double time = ((parts.hour * 60 + parts.minute) * 60 + parts.second) / double{seconds_a_day};
    return Date{day < 0 ? day - time : day + time};
}

// Removes a number of `fewest` to `most` digits from the front of the text.
std::optional<int> take_number(TextView& text, std::size_t fewest, std::size_t most) {
    const std::size_t digits = std::min(text.find_first_not_of(u"0123456789"), text.size());
    if (digits < fewest || digits > most) return std::nullopt;
    int number = 0;
    for (const char16_t digit : text.substr(0, digits)) number = number * 10 + (digit - u'0');
    text.remove_prefix(digits);
    return number;
}

// Removes one of the given units from the front of the text.
bool take_one_of(TextView& text, TextView units) {
    if (text.empty() || units.find(text.front()) == TextView::npos) return false;
    text.remove_prefix(1);
    return true;
}

// Reads `y-M-d` from the front of the text into the parts.
bool take_date(TextView& text, DateParts& parts) {
    const std::optional<int> year = take_number(text, 4, 4);
    if (!year || !take_one_of(text, u"-/")) return false;
    const std::optional<int> month = take_number(text, 1, 2);
    if (!month || !take_one_of(text, u"-/")) return false;
    const std::optional<int> day = take_number(text, 1, 2);
    if (!day) return false;
    parts.year = *year;
    parts.month = *month;
    parts.day = *day;
    return true;
}

// Reads `H:m`, `H:m:s` or `H:m:s.f` from the front of the text into the parts.
bool take_time(TextView& text, DateParts& parts) {
    const std::optional<int> hour = take_number(text, 1, 2);
    if (!hour || !take_one_of(text, u":")) return false;
    const std::optional<int> minute = take_number(text, 1, 2);
    if (!minute) return false;
    parts.hour = *hour;
    parts.minute = *minute;
    if (!take_one_of(text, u":")) return true;

    const std::optional<int> second = take_number(text, 1, 2);
    if (!second) return false;
    parts.second = *second;
    if (!take_one_of(text, u".")) return true;
    const std::size_t fraction_digits = std::min(text.find_first_not_of(u"0123456789"), text.size());
    text.remove_prefix(fraction_digits);
    return fraction_digits > 0;
}

void append_number(Text& text, int number, int digits) {
    int unit = 1;
    for (int i = 1; i < digits; ++i) unit *= 10;
    for (; unit > 0; unit /= 10) text.push_back(static_cast<char16_t>(u'0' + number / unit % 10));
}

void append_month(Text& text, const DateParts& parts) {
    append_number(text, parts.year, 4);
    text += u'-';
    append_number(text, parts.month, 2);
}

void append_date(Text& text, const DateParts& parts) {
    append_month(text, parts);
    text += u'-';
    append_number(text, parts.day, 2);
}

void append_time(Text& text, const DateParts& parts) {
    append_number(text, parts.hour, 2);
    text += u':';
    append_number(text, parts.minute, 2);
    text += u':';
    append_number(text, parts.second, 2);
}

}  // namespace

DateParts parts_of(Date date) {
    const double whole = std::trunc(date.days);
    if (!(whole >= first_day && whole <= last_day)) throw Failure(error::invalid_call);  // NaN compares false
    auto day = static_cast<int>(whole);
    auto second = static_cast<int>(std::floor(std::fabs(date.days - whole) * seconds_a_day + 0.5));
    if (second == seconds_a_day) {
        ++day;
        second = 0;
        if (day > last_day) throw Failure(error::invalid_call);
    }
    const chrono::year_month_day calendar(day_zero + chrono::days(day));
    return {int{calendar.year()},
            static_cast<int>(unsigned{calendar.month()}),
            static_cast<int>(unsigned{calendar.day()}),
            second / 3600,
            second / 60 % 60,
            second % 60};
}

Date date_of(const DateParts& parts) {
    const std::optional<Date> date = date_if_valid(parts);
    if (!date) throw Failure(error::invalid_call);
    return *date;
}

Text ordinary_text(Date date) {
    const DateParts parts = parts_of(date);
    const bool on_day_zero = DateParts{parts.year, parts.month, parts.day} == DateParts{};
    const bool at_midnight = parts.hour == 0 && parts.minute == 0 && parts.second == 0;
    if (on_day_zero) return format_time(date);
    return at_midnight ? format_date(date) : format_date_time(date);
}

std::optional<Date> date_from_text(TextView text) {
    DateParts parts;
    if (text.find(u':') == TextView::npos || text.find(u' ') != TextView::npos) {
        if (!take_date(text, parts)) return std::nullopt;
        if (text.empty()) return date_if_valid(parts);
        if (!take_one_of(text, u" ")) return std::nullopt;
    }
    if (!take_time(text, parts) || !text.empty()) return std::nullopt;
    return date_if_valid(parts);
}

Text format_date_time(Date date) {
    const DateParts parts = parts_of(date);
    Text text;
    text.reserve(19);
    append_date(text, parts);
    text += u' ';
    append_time(text, parts);
    return text;
}

Text format_date(Date date) {
    Text text;
    text.reserve(10);
    append_date(text, parts_of(date));
    return text;
}

Text format_month(Date date) {
    Text text;
    append_month(text, parts_of(date));
    return text;
}

Text format_time(Date date) {
    Text text;
    text.reserve(8);
    append_time(text, parts_of(date));
    return text;
}

}  // namespace vantlo
