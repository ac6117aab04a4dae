#include "automation/calendar.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>
#include <random>

#include "automation/error.h"
#include "support/failures.h"
#include "tests/support/printing.h"

namespace vantlo {

namespace {

using test::caught;

TEST_SUITE_BEGIN("[date]");

struct CalendarRow {
    double days;
    DateParts parts;
};

// clang-format off
constexpr CalendarRow calendar_rows[] = {
    {      0,        {1899, 12, 30,  0,  0,  0}},
    {      0.5,      {1899, 12, 30, 12,  0,  0}},
    {      1,        {1899, 12, 31,  0,  0,  0}},
    {      2,        {1900,  1,  1,  0,  0,  0}},
    {     60,        {1900,  2, 28,  0,  0,  0}},
    {     61,        {1900,  3,  1,  0,  0,  0}},   // 1900 was no leap year
    {     -1,        {1899, 12, 29,  0,  0,  0}},
    {     -1.25,     {1899, 12, 29,  6,  0,  0}},   // the fraction counts forward
    {     -1.75,     {1899, 12, 29, 18,  0,  0}},
    {     -2.5,      {1899, 12, 28, 12,  0,  0}},
    {  25569,        {1970,  1,  1,  0,  0,  0}},
    {  36585,        {2000,  2, 29,  0,  0,  0}},
    {  45356.75,     {2024,  3,  5, 18,  0,  0}},
    {  73050,        {2099, 12, 31,  0,  0,  0}},
    {-657434,        {100,   1,  1,  0,  0,  0}},
    {-657434.5,      {100,   1,  1, 12,  0,  0}},
    {2958465,        {9999, 12, 31,  0,  0,  0}},
    {2958465.9375,   {9999, 12, 31, 22, 30,  0}},
};
// clang-format on

TEST_CASE("parts_of and date_of convert between days and calendar") {
    for (const CalendarRow& row : calendar_rows) {
        CAPTURE(row.days);
        CHECK((parts_of(Date{row.days}) == row.parts));
        CHECK(date_of(row.parts).days == row.days);
    }
}

TEST_CASE("parts_of rounds to the nearest second and carries") {
    struct Row {
        double days;
        DateParts parts;
    };
    constexpr double second = 1.0 / 86400;
    // clang-format off
    const Row rows[] = {
        {45356 + 0.49 * second,          {2024,  3,  5,  0,  0,  0}},
        {45356 + 0.51 * second,          {2024,  3,  5,  0,  0,  1}},
        {45356 + 59.6 * second,          {2024,  3,  5,  0,  1,  0}},   // into the minute
        {45356 + 3599.6 * second,        {2024,  3,  5,  1,  0,  0}},   // into the hour
        {45356 + 86399.4 * second,       {2024,  3,  5, 23, 59, 59}},
        {45356 + 86399.6 * second,       {2024,  3,  6,  0,  0,  0}},   // into the day
        {45351 - 0.4 * second,           {2024,  2, 29,  0,  0,  0}},
        {45657 - 0.4 * second + 0.0,     {2024, 12, 31,  0,  0,  0}},
        {45658 - 0.4 * second,           {2025,  1,  1,  0,  0,  0}},   // into the year
        {-1 - 86399.6 * second,          {1899, 12, 30,  0,  0,  0}},   // up to day 0, from before it
        {-2 - 86399.6 * second,          {1899, 12, 29,  0,  0,  0}},
        {2958464 + 86399.6 * second,     {9999, 12, 31,  0,  0,  0}},   // the last day is still there to be reached
        {0.9999999,                      {1899, 12, 31,  0,  0,  0}},
        {-0.25,                          {1899, 12, 30,  6,  0,  0}},
        {-0.0,                           {1899, 12, 30,  0,  0,  0}},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.days);
        CHECK((parts_of(Date{row.days}) == row.parts));
    }
}

TEST_CASE("parts_of refuses what lies outside the years 100 to 9999") {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double days : {-657435.0, -1e300, 2958466.0, 1e300, 2958465.999999, infinity, -infinity, std::nan("")}) {
        CAPTURE(days);
        CHECK(caught([&] { return parts_of(Date{days}); }).number == error::invalid_call);
    }
}

TEST_CASE("date_of refuses what is no date") {
    const DateParts rows[] = {
        {99, 12, 31, 0, 0, 0},   {10000, 1, 1, 0, 0, 0}, {-1, 1, 1, 0, 0, 0},    {2024, 0, 1, 0, 0, 0},
        {2024, 13, 1, 0, 0, 0},  {2024, -1, 1, 0, 0, 0}, {2024, 1, 0, 0, 0, 0},  {2024, 1, 32, 0, 0, 0},
        {2024, 1, 257, 0, 0, 0}, {2024, 4, 31, 0, 0, 0}, {2023, 2, 29, 0, 0, 0}, {1900, 2, 29, 0, 0, 0},
        {2024, 1, 1, 24, 0, 0},  {2024, 1, 1, -1, 0, 0}, {2024, 1, 1, 0, 60, 0}, {2024, 1, 1, 0, -1, 0},
        {2024, 1, 1, 0, 0, 60},  {2024, 1, 1, 0, 0, -1},
    };
    for (const DateParts& parts : rows) {
        CAPTURE(parts.year);
        CAPTURE(parts.month);
        CAPTURE(parts.day);
        CHECK(caught([&] { return date_of(parts); }).number == error::invalid_call);
    }
    CHECK(date_of({2024, 2, 29, 0, 0, 0}).days == 45351);
    CHECK(date_of({2000, 2, 29, 0, 0, 0}).days == 36585);
}

TEST_CASE("ordinary_text leaves out what a date does not have") {
    struct Row {
        DateParts parts;
        TextView expected;
    };
    // clang-format off
    const Row rows[] = {
        {{2024,  3,  5, 14,  7,  9}, u"2024-03-05 14:07:09"},
        {{2024,  3,  5,  0,  0,  0}, u"2024-03-05"},
        {{2024,  3,  5,  0,  0,  1}, u"2024-03-05 00:00:01"},
        {{1899, 12, 30, 14,  7,  9}, u"14:07:09"},
        {{1899, 12, 30,  0,  0,  0}, u"00:00:00"},
        {{1899, 12, 29,  6,  0,  0}, u"1899-12-29 06:00:00"},
        {{1899, 12, 31,  0,  0,  0}, u"1899-12-31"},
        {{ 100,  1,  1,  0,  0,  0}, u"0100-01-01"},
        {{9999, 12, 31, 23, 59, 59}, u"9999-12-31 23:59:59"},
    };
    // clang-format on
    for (const Row& row : rows) {
        const Date date = date_of(row.parts);
        CHECK(ordinary_text(date) == row.expected);
        CHECK(date_from_text(row.expected) == date);
    }
    CHECK(ordinary_text(Date{0.999999999}) == u"1899-12-31");
    CHECK(ordinary_text(Date{-0.25}) == u"06:00:00");
    CHECK(caught([] { return ordinary_text(Date{1e9}); }).number == error::invalid_call);
}

TEST_CASE("The fixed formats write every part with all its digits") {
    const Date date = date_of({2024, 3, 5, 4, 7, 9});
    CHECK(format_date_time(date) == u"2024-03-05 04:07:09");
    CHECK(format_date(date) == u"2024-03-05");
    CHECK(format_month(date) == u"2024-03");
    CHECK(format_time(date) == u"04:07:09");

    CHECK(format_date_time(Date{}) == u"1899-12-30 00:00:00");
    CHECK(format_date_time(date_of({101, 1, 1, 23, 0, 0})) == u"0101-01-01 23:00:00");
    CHECK(format_time(Date{45356.999999999}) == u"00:00:00");
    CHECK(format_date(Date{45356.999999999}) == u"2024-03-06");
    CHECK(caught([] { return format_date_time(Date{-657435}); }).number == error::invalid_call);
}

TEST_CASE("date_from_text reads dates, times and both") {
    struct Row {
        TextView input;
        DateParts expected;
    };
    // clang-format off
    const Row rows[] = {
        {u"2024-03-05 14:07:09",         {2024,  3,  5, 14,  7,  9}},
        {u"2024/03/05 14:07:09",         {2024,  3,  5, 14,  7,  9}},
        {u"2024-3-5 4:7:9",              {2024,  3,  5,  4,  7,  9}},
        {u"2024/3/5",                    {2024,  3,  5,  0,  0,  0}},
        {u"2024-03-05 14:07",            {2024,  3,  5, 14,  7,  0}},
        {u"2024-03-05 14:07:09.9999999", {2024,  3,  5, 14,  7,  9}},
        {u"14:07:09",                    {1899, 12, 30, 14,  7,  9}},
        {u"14:07",                       {1899, 12, 30, 14,  7,  0}},
        {u"0:0",                         {1899, 12, 30,  0,  0,  0}},
        {u"14:07:09.5",                  {1899, 12, 30, 14,  7,  9}},
        {u"1899-12-30",                  {1899, 12, 30,  0,  0,  0}},
        {u"0100-01-01",                  { 100,  1,  1,  0,  0,  0}},
        {u"2024-02-29",                  {2024,  2, 29,  0,  0,  0}},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(date_from_text(row.input) == date_of(row.expected));
    }
}

TEST_CASE("date_from_text finds no date in other texts") {
    const TextView rows[] = {
        u"",
        u" ",
        u"abc",
        u"2024",
        u"2024-03",
        u"2024-03-",
        u"24-03-05",
        u"02024-03-05",
        u"2024-003-05",
        u"2024-03-005",
        u"2024.03.05",
        u"20240305",
        u"2023-02-29",
        u"2024-13-01",
        u"2024-00-01",
        u"2024-01-00",
        u"0099-12-31",
        u"2024-03-05 ",
        u" 2024-03-05",
        u"2024-03-05  14:07",
        u"2024-03-05T14:07",
        u"2024-03-05 14",
        u"2024-03-05 14:",
        u"2024-03-05 14:07:",
        u"2024-03-05 14:07:09.",
        u"2024-03-05 14:07:09.x",
        u"2024-03-05 14:07:09 ",
        u"2024-03-05 14:07.5",
        u"2024-03-05 24:00:00",
        u"2024-03-05 14:60",
        u"2024-03-05 14:07:60",
        u"2024-03-05 014:07",
        u"14:7:",
        u":07",
        u"-1:07",
        u"14:07 2024-03-05",
        u"2024:03",
        u"２０２４-03-05",
        u"2024-03-0é",
    };
    for (const TextView text : rows) {
        CAPTURE(text);
        CHECK_FALSE(date_from_text(text).has_value());
    }
}

TEST_CASE("Every day of the calendar goes there and back") {
    for (int day = -657434; day <= 2958465; ++day) {
        const Date date{static_cast<double>(day)};
        if (date_of(parts_of(date)) != date) FAIL(day);
    }
}

TEST_CASE("Every second goes to text and back, whatever the day") {
    std::mt19937_64 random(20240305);
    for (int i = 0; i < 100000; ++i) {
        const auto below = [&random](int limit) {
            return static_cast<int>(random() % static_cast<std::uint64_t>(limit));
        };
        const Date day{static_cast<double>(below(657434 + 2958466) - 657434)};
        DateParts parts = parts_of(day);
        parts.hour = below(24);
        parts.minute = below(60);
        parts.second = below(60);
        const Date date = date_of(parts);
        const bool back = parts_of(date) == parts && date_from_text(format_date_time(date)) == date &&
                          date_from_text(ordinary_text(date)) == date;
        if (!back) FAIL(date.days);
    }
}

TEST_SUITE_END();

}  // namespace

}  // namespace vantlo
