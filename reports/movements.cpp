#include "reports/movements.h"

#include <algorithm>
#include <ctime>
#include <string>

#include "automation/calendar.h"

namespace vantlo {

namespace {

constexpr std::int64_t past_all = all_movements.until;

struct Movement {
    std::int64_t number;
    Date clock;
    bool is_gap;
};

/// Text of a column whose type varies with the engine: a whole number of 64 bits.
std::int64_t number_of(const Variant& value) { return std::stoll(to_utf8(to_text(value))); }

Date clock_of(const Variant& value) {
    if (const Date* const date = value.get_if<Date>()) return *date;
    return date_from_text(to_text(value)).value_or(Date{});
}

/// The first or last movement of those whose number fulfils the condition; nothing if there is none.
std::optional<Movement> find_movement(NativeConnection& database, TextView extreme, TextView condition) {
    const RecordsetVariable rows =
        database.execute(Text(u"select MovementNo,MovedAt,Action from StockMovement where MovementNo=(select ") +
                         Text(extreme) + u"(MovementNo) from StockMovement" + Text(condition) + u")");
    if (rows->eof()) return std::nullopt;
    return Movement{number_of(rows->field(u"MovementNo")), clock_of(rows->field(u"MovedAt")),
                    to_text(rows->field(u"Action")) == u"gap"};
}

Text number_text_of(std::int64_t number) { return from_utf8(std::to_string(number)); }

std::optional<Movement> movement_from(NativeConnection& database, std::int64_t number) {
    return find_movement(database, u"min", u" where MovementNo>=" + number_text_of(number));
}

std::int64_t count_from(NativeConnection& database, std::int64_t number) {
    const RecordsetVariable rows = database.execute(
        u"select count(*) as Movements from StockMovement where MovementNo>=" + number_text_of(number));
    return number_of(rows->field(u"Movements"));
}

std::tm broken_down(Date date) {
    const DateParts parts = parts_of(date);
    std::tm time{};
    time.tm_year = parts.year - 1900;
    time.tm_mon = parts.month - 1;
    time.tm_mday = parts.day;
    time.tm_hour = parts.hour;
    time.tm_min = parts.minute;
    time.tm_sec = parts.second;
    return time;
}

Date together(const std::tm& time) {
    return date_of({time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec});
}

/// The time that the journal's clock shows at a local time.
Date clock_at(const Dialect& dialect, Date local) {
    if (!dialect.has_utc_clock) return local;
    std::tm parts = broken_down(local);
    parts.tm_isdst = -1;  // the calendar knows whether summer time is on
    const std::time_t instant = std::mktime(&parts);
    std::tm utc{};
    ::gmtime_r(&instant, &utc);
    return together(utc);
}

/// The number of the first movement at that time of the clock or later; past all if there is none.
std::int64_t first_at(NativeConnection& database, Date clock) {
    const std::optional<Movement> last = find_movement(database, u"max", u"");
    if (!last || last->clock < clock) return past_all;
    std::int64_t earliest = movement_from(database, 0)->number;
    std::int64_t latest = last->number;  // is not before that time
    while (earliest < latest) {
        const std::int64_t middle = earliest + (latest - earliest) / 2;
        const std::optional<Movement> movement = movement_from(database, middle);
        if (movement->clock < clock) {
            earliest = movement->number + 1;
        } else {
            latest = middle;
        }
    }
    return latest;
}

}  // namespace

MovementRange movements_within(NativeConnection& database, const Period& period) {
    const Dialect& dialect = database.dialect();
    return {period.from ? first_at(database, clock_at(dialect, *period.from)) : 0,
            period.until ? first_at(database, clock_at(dialect, *period.until)) : past_all};
}

Text and_numbered(const MovementRange& range) {
    return u" and MovementNo>=" + number_text_of(range.from) + u" and MovementNo<" + number_text_of(range.until);
}

MovementNumbers movement_numbers(NativeConnection& database) {
    const std::optional<Movement> first = movement_from(database, 0);
    if (!first) return {};
    return {first->number, find_movement(database, u"max", u"")->number};
}

bool is_gap(NativeConnection& database, std::int64_t number) {
    const std::optional<Movement> movement = movement_from(database, number);
    return movement && movement->is_gap;
}

bool was_next_movement_at(NativeConnection& database, std::int64_t number, Date moment) {
    constexpr double tolerance = 10.0 / (24 * 60);
    if (number <= 0 || movement_numbers(database).last < number - 1) return false;
    const std::optional<Movement> before =
        find_movement(database, u"max", u" where MovementNo<" + number_text_of(number));
    return !before || local_time(database.dialect(), before->clock).days <= moment.days + tolerance;
}

Date local_now() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return together(local);
}

NewestMovements newest_movements(NativeConnection& database, std::int64_t most) {
    const MovementNumbers numbers = movement_numbers(database);
    if (count_from(database, numbers.first) <= most) return {};
    std::int64_t too_early = numbers.first;
    std::int64_t from = numbers.last + 1;
    while (from - too_early > 1) {
        const std::int64_t middle = too_early + (from - too_early) / 2;
        const std::int64_t count = count_from(database, middle);
        (count > most ? too_early : from) = middle;
        if (count <= most && count >= most - most / 10) break;
    }
    const std::optional<Movement> first = movement_from(database, std::min(from, numbers.last));
    return {from, local_time(database.dialect(), first->clock)};
}

Date local_time(const Dialect& dialect, Date clock) {
    if (!dialect.has_utc_clock) return clock;
    std::tm parts = broken_down(clock);
    const std::time_t instant = ::timegm(&parts);
    std::tm local{};
    ::localtime_r(&instant, &local);
    return together(local);
}

std::optional<Date> journal_begins(NativeConnection& database) {
    const std::optional<Movement> first = movement_from(database, 0);
    if (!first) return std::nullopt;
    return local_time(database.dialect(), first->clock);
}

}  // namespace vantlo
