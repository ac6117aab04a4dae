#include "ado/sqlite/declared_type.h"

#include <doctest/doctest.h>

#include <limits>
#include <string>

#include "ado/sqlite/sqlite_connection.h"
#include "automation/calendar.h"
#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

// What a column of that declared type gives back for a stored literal.
Variant stored_and_read(const std::string& declaration, const std::string& literal) {
    const Owned<SqliteConnection> connection(new SqliteConnection(":memory:"));
    connection->run_script("create table T (x " + declaration + "); insert into T values (" + literal + ")");
    return connection->run(u"select x from T").rows.at(0).at(0);
}

const Currency largest_currency = Currency::from_ten_thousandths(std::numeric_limits<std::int64_t>::max());

TEST_CASE("A column's declared type decides the type of its values") {
    const Currency half = Currency::from_ten_thousandths(5000);
    struct Row {
        const char* declaration;
        const char* literal;
        Variant value;
    };
    // clang-format off
    const Row rows[] = {
        // declaration         stored                   read
        {"tinyint",            "255",                   std::uint8_t{255}},
        {"byte",               "0",                     std::uint8_t{0}},
        {"smallint",           "-32768",                std::int16_t{-32768}},
        {"short",              "2",                     std::int16_t{2}},
        {"int",                "2147483647",            2147483647},
        {"integer",            "-2147483648",           std::numeric_limits<std::int32_t>::min()},
        {"long",               "7",                     7},
        {"mediumint",          "7",                     7},
        {"real",               "2.1",                   2.1F},
        {"single",             "2",                     2.0F},
        {"float4",             "-0.5",                  -0.5F},
        {"float",              "2.1",                   2.1},
        {"double",             "2",                     2.0},
        {"double precision",   "1e300",                 1e300},
        {"money",              "0.5",                   half},
        {"currency",           "12",                    Currency::from_whole(12)},
        {"smallmoney",         "-0.5",                  Currency::from_ten_thousandths(-5000)},
        {"datetime",           "'2024-03-05 14:07:09'", date_of({2024, 3, 5, 14, 7, 9})},
        {"smalldatetime",      "'2024-03-05 14:07'",    date_of({2024, 3, 5, 14, 7, 0})},
        {"date",               "'2024-03-05'",          date_of({2024, 3, 5, 0, 0, 0})},
        {"timestamp",          "45356.25",              date_of({2024, 3, 5, 6, 0, 0})},
        {"bit",                "1",                     true},
        {"boolean",            "0",                     false},
        {"yesno",              "-1",                    true},
        {"char(3)",            "'abc'",                 u"abc"},
        {"varchar(20)",        "'007'",                 u"007"},
        {"nchar(2)",           "'箱子'",                u"箱子"},
        {"nvarchar(20)",       "12",                    u"12"},
        {"text",               "' 𠮷 '",                u" 𠮷 "},
        {"ntext",              "''",                    u""},
        {"memo",               "'it''s'",               u"it's"},
        {"clob",               "2.5",                   u"2.5"},
        {"decimal(19,4)",      "24.5",                  Other{u"24.5"}},
        {"numeric(9)",         "'0.1'",                 Other{u"0.1"}},
        {"bigint",             "-9223372036854775808",  Other{u"-9223372036854775808"}},
        {"blob",               "x'00ff'",               Other{}},
        {"blob",               "'a text'",              u"a text"},
        {"geometry",           "x''",                   Other{}},
        {"geometry",           "3",                     3},
        {"",                   "2.5",                   2.5},
        // however it is written
        {"NVarChar ( 20 )",    "'a'",                   u"a"},
        {"MONEY",              "1",                     Currency::from_whole(1)},
        {"Double Precision",   "1",                     1.0},
        // read rounded to four decimals, half to even
        {"money",              "0.1 + 0.2",             Currency::from_ten_thousandths(3000)},
        {"money",              "0.33333",               Currency::from_ten_thousandths(3333)},
        {"money",              "0.03125",               Currency::from_ten_thousandths(312)},
        {"money",              "922337203685477",       Currency::from_ten_thousandths(9223372036854770000)},
    };
    // clang-format on
    for (const Row& row : rows) {
        INFO(row.declaration, " ", row.literal);
        CHECK(stored_and_read(row.declaration, row.literal) == row.value);
        CHECK(stored_and_read(row.declaration, "null") == Variant(Null{}));
    }
}

TEST_CASE("A value that does not fit its column's declared type comes back by its storage class") {
    struct Row {
        const char* declaration;
        const char* literal;
        Variant value;
    };
    // clang-format off
    const Row rows[] = {
        // declaration   stored                   read
        {"tinyint",      "256",                   256},
        {"tinyint",      "-1",                    -1},
        {"smallint",     "70000",                 70000},
        {"smallint",     "1.5",                   1.5},
        {"int",          "2147483648",            Other{u"2147483648"}},
        {"int",          "'abc'",                 u"abc"},
        {"real",         "1e39",                  1e39},
        {"real",         "'abc'",                 u"abc"},
        {"money",        "'abc'",                 u"abc"},
        {"money",        "922337203685478",       Other{u"922337203685478"}},
        {"money",        "-922337203685478",      Other{u"-922337203685478"}},
        {"money",        "1e15 + 0.5",            1e15 + 0.5},
        {"money",        "9e999",                 std::numeric_limits<double>::infinity()},
        {"date",         "'tomorrow'",            u"tomorrow"},
        {"date",         "1700000000",            1700000000},
        {"date",         "-657434.5",             -657434.5},
        {"date",         "2958466",               2958466},
        {"bit",          "5",                     5},
        {"bit",          "0.5",                   0.5},
        {"bit",          "'yes'",                 u"yes"},
        {"memo",         "9e999",                 std::numeric_limits<double>::infinity()},
        {"decimal",      "9e999",                 std::numeric_limits<double>::infinity()},
        {"decimal",      "'abc'",                 u"abc"},
        {"money",        "x'31'",                 Other{}},
        {"text",         "x'31'",                 Other{}},
    };
    // clang-format on
    for (const Row& row : rows) {
        INFO(row.declaration, " ", row.literal);
        CHECK(stored_and_read(row.declaration, row.literal) == row.value);
    }
}

TEST_CASE("An expression goes by its storage class") {
    const Owned<SqliteConnection> connection(new SqliteConnection(":memory:"));
    connection->run_script("create table T (Qty money); insert into T values (2), (0.5)");
    const auto value = [&](TextView expression) {
        return connection->run(Text(u"select ") + Text(expression) + u" from T").rows.at(0).at(0);
    };
    CHECK(value(u"count(*)") == Variant(2));
    CHECK(value(u"sum(Qty)") == Variant(2.5));
    CHECK(value(u"4294967296 * 2") == Variant(Other{u"8589934592"}));
    CHECK(value(u"'箱' || 1") == Variant(u"箱1"));
    CHECK(value(u"x'31'") == Variant(Other{}));
    CHECK(value(u"null") == Variant(Null{}));
    CHECK(value(u"max(Qty)") == Variant(2));
}

TEST_CASE("The largest money that a whole number can store reads exact") {
    CHECK(field_value(DeclaredType::currency, std::int64_t{922337203685477}) ==
          Variant(Currency::from_ten_thousandths(9223372036854770000)));
    CHECK(field_value(DeclaredType::currency, largest_currency.to_double()) == Variant(largest_currency.to_double()));
}

}  // namespace
}  // namespace vantlo::test
