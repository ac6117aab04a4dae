#include "import/cell_values.h"

#include <doctest/doctest.h>

#include "automation/calendar.h"
#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

const char* name_of(int state) {
    constexpr const char* names[] = {"", "none", "ambiguous", "comma", "with text"};
    return names[state];
}

/// The number, or why there is none.
std::string number(std::string_view text, const CellRules& rules = {}) {
    const auto reading = number_of_cell(text, rules);
    return reading.state == CellReading<std::string>::State::read ? reading.value
                                                                  : name_of(static_cast<int>(reading.state));
}

/// The date, or why there is none.
std::string date(std::string_view text, const CellRules& rules = {}) {
    const auto reading = date_of_cell(text, rules);
    return reading.state == CellReading<Date>::State::read ? to_utf8(ordinary_text(reading.value))
                                                           : name_of(static_cast<int>(reading.state));
}

struct Row {
    const char* text;
    const char* expected;
};

TEST_CASE("A number is read as people write it, and a mark that can be two things is never guessed") {
    const Row rows[] = {
        // plain ones, as they always were
        {"2", "2"},
        {"-2", "-2"},
        {"0.5", "0.5"},
        {".5", ".5"},
        {"5.", "5."},
        {"1e5", "1e5"},
        {"1.234", "1.234"},
        // blanks, full width, signs
        {" 2 ", "2"},
        {"\u3000２\u00A0", "2"},
        {"１２３", "123"},
        {"１，２３４．５", "1234.5"},
        {"＋７", "7"},
        {"\u22127", "-7"},
        // thousands, where only one reading is left
        {"1,234.5", "1234.5"},
        {"1.234,5", "1234.5"},
        {"1,234,567", "1234567"},
        {"1.234.567", "1234567"},
        {"-1,234.50", "-1234.50"},
        // two readings
        {"1,234", "ambiguous"},
        {"-12,345", "ambiguous"},
        {"1,5", "comma"},
        {"0,500", "comma"},
        {"1234,567", "comma"},
        // none
        {"", ""},
        {"2箱", "with text"},
        {"2 箱", "with text"},
        {"1.5kg", "with text"},
        {"5%", "with text"},
        {"(5)", "(5)"},
        {"5-", "5-"},
        {"--5", "none"},
        {"1,23,456", "none"},
        {"12,34.5", "none"},
        {"1,234.5.6", "none"},
        {"1.234,5,6", "none"},
        {"1,234.", "none"},
        {"0,123.5", "none"},
        {"1 234", "1 234"},
    };
    for (const Row& row : rows) {
        INFO(row.text);
        CHECK(number(row.text) == row.expected);
    }
}

TEST_CASE("A number goes by the mark of decimals that the user names") {
    const CellRules comma{',', true}, point{'.', true};
    CHECK(number("1,5", comma) == "1.5");
    CHECK(number("1,234", comma) == "1.234");
    CHECK(number("1.234", comma) == "1234");
    CHECK(number("1.234,5", comma) == "1234.5");
    CHECK(number("1.5", comma) == "none");
    CHECK(number("1,234.5", comma) == "none");
    CHECK(number("1,234", point) == "1234");
    CHECK(number("1.234", point) == "1.234");
    CHECK(number("1,5", point) == "none");
    CHECK(number("12", comma) == "12");
}

TEST_CASE("A point with three digits behind it is ambiguous where the comma does not separate values") {
    const CellRules semicolons{std::nullopt, true};
    CHECK(number("1.234", semicolons) == "ambiguous");
    CHECK(number("123.456", semicolons) == "ambiguous");
    CHECK(number("0.234", semicolons) == "0.234");
    CHECK(number("1.5", semicolons) == "1.5");
    CHECK(number("1234.567", semicolons) == "1234.567");
}

TEST_CASE("A date is read in the forms of both languages, and one with two readings is never guessed") {
    const Row rows[] = {
        {"2024-03-05", "2024-03-05"},
        {"2024/3/5", "2024-03-05"},
        {" 2024-03-05 ", "2024-03-05"},
        {"2024-03-05 14:07", "2024-03-05 14:07:00"},
        {"2024-03-05T14:07:09", "2024-03-05 14:07:09"},
        {"2024/3/5 2:07:09 PM", "2024-03-05 14:07:09"},
        {"2024/3/5 下午2:07", "2024-03-05 14:07:00"},
        {"2024/3/5 上午12:07", "2024-03-05 00:07:00"},
        {"2024年3月5日", "2024-03-05"},
        {"2024年3月5日 14时07分", "2024-03-05 14:07:00"},
        {"2024年3月5日星期二", "2024-03-05"},
        {"２０２４年３月５日", "2024-03-05"},
        {"2024.3.5", "2024-03-05"},
        {"5.3.2024", "2024-03-05"},
        {"05.03.2024 14:07", "2024-03-05 14:07:00"},
        {"5. 3. 2024", "2024-03-05"},
        {"20240305", "2024-03-05"},
        {"45356", "2024-03-05"},
        {"45356.5", "2024-03-05 12:00:00"},
        {"5-Mar-2024", "2024-03-05"},
        {"5 March 2024", "2024-03-05"},
        {"Mar 5, 2024", "2024-03-05"},
        {"25/3/2024", "2024-03-25"},
        {"3/25/2024", "2024-03-25"},
        {"3/3/2024", "2024-03-03"},
        {"03/04/2024", "ambiguous"},
        {"3-4-2024", "ambiguous"},
        {"2024-02-30", "none"},
        {"30.2.2024", "none"},
        {"13/13/2024", "none"},
        {"5.3.24", "none"},
        {"24/3/5", "none"},
        {"5-Foo-2024", "none"},
        {"2024年3月", "none"},
        {"2024", "none"},
        {"12:30", "none"},
        {"20241399", "none"},
        {"2024-03-05 13:07 PM", "none"},
        {"yesterday", "none"},
        {"", "none"},
    };
    for (const Row& row : rows) {
        INFO(row.text);
        CHECK(date(row.text) == row.expected);
    }
    CHECK(date("03/04/2024", {{}, false, DateOrder::day_first}) == "2024-04-03");
    CHECK(date("03/04/2024 8:05", {{}, false, DateOrder::month_first}) == "2024-03-04 08:05:00");
    CHECK(date("25/3/2024", {{}, false, DateOrder::month_first}) == "none");
    CHECK(date(std::string(100'000, '1')) == "none");
}

TEST_CASE("A serial number counts from 1900 with its false leap day, or from 1904") {
    const auto day = [](double serial, bool from_1904 = false) {
        const auto found = date_of_serial(serial, from_1904);
        return found ? to_utf8(ordinary_text(*found)) : "none";
    };
    CHECK(day(45356) == "2024-03-05");
    CHECK(day(45356.588298611) == "2024-03-05 14:07:09");
    CHECK(day(61) == "1900-03-01");
    CHECK(day(60) == "none");
    CHECK(day(59) == "1900-02-28");
    CHECK(day(1) == "1900-01-01");
    CHECK(day(0.5) == "none");
    CHECK(day(43894, true) == "2024-03-05");
    CHECK(day(0, true) == "1904-01-01");
    CHECK(day(2958466) == "none");
    CHECK(day(-1) == "none");
}

}  // namespace
}  // namespace vantlo::test
