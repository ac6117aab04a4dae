#include "dataaccess/sql_literals.h"

#include <doctest/doctest.h>

#include <limits>

#include "automation/calendar.h"
#include "automation/error.h"
#include "automation/error_text.h"
#include "dataaccess/failure_message.h"
#include "tests/support/recording.h"

namespace vantlo::test {
namespace {

void set_kind(DatabaseKind kind) { project_state().database_kind = kind; }

Date at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return date_of({year, month, day, hour, minute, second});
}

TEST_CASE("GetSqlVal turns a value of each type into its literal") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    struct Row {
        Variant value;
        const char* literal;
    };
    const Row rows[] = {
        {Variant(), "null"},
        {Null{}, "null"},
        {std::uint8_t{255}, "255"},
        {std::int16_t{-32768}, "-32768"},
        {std::int32_t{2147483647}, "2147483647"},
        {2.5F, "2.5"},
        {-0.0F, "0"},
        {1e7F, "1E+07"},
        {0.1, "0.1"},
        {1e-5, "1E-05"},
        {Currency::from_ten_thousandths(25000), "2.5"},
        {Currency::from_ten_thousandths(-1), "-0.0001"},
        {Currency::from_ten_thousandths(std::numeric_limits<std::int64_t>::min()), "-922337203685477.5808"},
        {true, "1"},
        {false, "0"},
        {Text(u""), "''"},
        {Text(u"   "), "''"},
        {Text(u" O'Neil "), "'O''Neil'"},
        {Text(u"'"), "''''"},
        {Text(u"''"), "''''''"},
        {Text(u"a b"), "'a b'"},
        {Text(u"\tx\t"), "'\tx\t'"},
        {Text(u"　全角　"), "'　全角　'"},
        {Text(u"\\' or 1=1 --"), "'\\'' or 1=1 --'"},
        {Text(u"𠮷"), "'𠮷'"},
        {Text(u"50%_[x]"), "'50%_[x]'"},
        {Other{u"1.5"}, ""},
        {Other{}, ""},
    };
    for (const Row& row : rows) CHECK(to_utf8(GetSqlVal(row.value)) == row.literal);
    CHECK(recorder.events.empty());
}

TEST_CASE("GetSqlVal in LIKE mode escapes, and puts the wildcard where the position says") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    struct Row {
        const char16_t* value;
        TextView wildcard;
        TextView position;
        const char* literal;
    };
    const Row rows[] = {
        {u"50%_off", u"%", u"both", " like '%50[%][_]off%'"},
        {u"50%_off", u"%", u"Both", " like '%50[%][_]off%'"},
        {u"x", not_given, not_given, "'x'"},
        {u"[a]", not_given, not_given, "'[[]a]'"},
        {u" x ", u"%", u"START", " like '%x'"},
        {u"x", u"%", u"end", " like 'x%'"},
        {u"x", u"*", u"End", " like 'x*'"},
        {u"x", u"%", u"middle", "'x'"},
        {u"x", u"%", not_given, "'x'"},
        {u"x", u"[DROP]", u"Both", "'x'"},
        {u"x", u"[drop]", u"Both", "'x'"},
        {u"x", u"", u"Both", " like 'x'"},
        {u"O'Neil", u"%", u"both", " like '%O''Neil%'"},
    };
    for (const Row& row : rows) CHECK(to_utf8(GetSqlVal(row.value, true, row.wildcard, row.position)) == row.literal);
    CHECK(to_utf8(GetSqlVal(std::int16_t{5}, true, u"%", u"Both")) == "5");
}

TEST_CASE("Get_LikeStr escapes the bracket before it brings brackets of its own") {
    struct Row {
        const char16_t* text;
        const char* escaped;
    };
    const Row rows[] = {
        {u"a_b", "a[_]b"}, {u" 50% ", "50[%]"}, {u"[a]", "[[]a]"}, {u"[_%'", "[[][_][%]''"}, {u"", ""},
    };
    for (const Row& row : rows) CHECK(Get_LikeStr(row.text) == Variant(from_utf8(row.escaped)));
}

TEST_CASE("Get_LikeStr leaves its failure to its caller") {
    try {
        Get_LikeStr(Null{});
        FAIL("Null was escaped");
    } catch (const Failure& failure) {
        CHECK(failure.number() == error::invalid_use_of_null);
    }
}

TEST_CASE("Get_DateStr writes a date in the syntax of the database kind") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    const Date afternoon = at(2024, 3, 5, 14, 7, 9);
    const Date time_alone = {at(1899, 12, 30, 14, 7, 9)};
    struct Row {
        DatabaseKind kind;
        Date date;
        std::int16_t form;
        const char* literal;
    };
    const Row rows[] = {
        {DatabaseKind::sql_server, afternoon, 0, "'2024-03-05 14:07:09'"},
        {DatabaseKind::access, afternoon, 0, "#2024-03-05 14:07:09#"},
        {DatabaseKind::other, afternoon, 0, ""},
        {DatabaseKind::sql_server, afternoon, 1, "'2024-03'"},
        {DatabaseKind::sql_server, afternoon, 2, "'2024-03-05'"},
        {DatabaseKind::sql_server, afternoon, 3, "'14:07:09'"},
        {DatabaseKind::sql_server, afternoon, 4, "'2024-03-05 14:07:09'"},
        {DatabaseKind::sql_server, afternoon, -1, "'2024-03-05 14:07:09'"},
        {DatabaseKind::access, afternoon, 3, "#14:07:09#"},
        {DatabaseKind::sql_server, at(2024, 3, 5), 0, "'2024-03-05 00:00:00'"},
        {DatabaseKind::sql_server, at(1901, 1, 1), 0, "'1901-01-01 00:00:00'"},
        {DatabaseKind::sql_server, at(1900, 12, 31), 0, "'1900-12-31'"},
        {DatabaseKind::sql_server, at(1900, 12, 31, 8), 0, "'1900-12-31 08:00:00'"},
        {DatabaseKind::sql_server, time_alone, 0, "'14:07:09'"},
        {DatabaseKind::sql_server, time_alone, 1, "'1899-12'"},
        {DatabaseKind::sql_server, time_alone, 2, "'1899-12-30'"},
        {DatabaseKind::sql_server, time_alone, 3, "'14:07:09'"},
    };
    for (const Row& row : rows) {
        set_kind(row.kind);
        CHECK(to_utf8(Get_DateStr(row.date, row.form)) == row.literal);
    }
    CHECK(recorder.events.empty());
}

TEST_CASE("Get_DateStr takes a text for the date that it spells, and a number for its day") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    set_kind(DatabaseKind::sql_server);
    CHECK(to_utf8(Get_DateStr(u"2024-03-05", date_form::whole)) == "'2024-03-05 00:00:00'");
    CHECK(to_utf8(Get_DateStr(u"2024-03-05 14:07:09", date_form::time)) == "'14:07:09'");
    CHECK(to_utf8(Get_DateStr(std::int32_t{45356}, date_form::day)) == "'2024-03-05'");
    CHECK(to_utf8(Get_DateStr(45356.5, date_form::whole)) == "'2024-03-05 12:00:00'");
    CHECK(recorder.events.empty());
    CHECK(Get_DateStr(u"no date", date_form::whole).empty());
    CHECK(recorder.trace(Detail::statements) ==
          std::vector<std::string>{"message Get_DateStr():" + to_utf8(standard_text(13))});
}

TEST_CASE("GetSqlVal turns a date into what Get_DateStr makes of it, and the zero date into null") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    set_kind(DatabaseKind::sql_server);
    CHECK(to_utf8(GetSqlVal(at(2024, 3, 5, 14, 7, 9))) == "'2024-03-05 14:07:09'");
    CHECK(to_utf8(GetSqlVal(Date{})) == "null");
    set_kind(DatabaseKind::other);
    CHECK(to_utf8(GetSqlVal(at(2024, 3, 5))) == "");
    CHECK(to_utf8(GetSqlVal(Date{})) == "null");
}

TEST_CASE("A literal that cannot be made is empty, and its routine says so") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    CHECK(GetSqlVal(std::numeric_limits<float>::infinity()).empty());
    CHECK(recorder.trace(Detail::statements) ==
          std::vector<std::string>{"message GetSqlVal():" + to_utf8(standard_text(6))});
    recorder.events.clear();
    CHECK(Get_DateStr(Date{1e9}, 0).empty());
    CHECK(recorder.trace(Detail::statements) ==
          std::vector<std::string>{"message Get_DateStr():" + to_utf8(standard_text(5))});
}

TEST_CASE("A message is cut where it would not fit") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    show_failure(Text(300, u'x').c_str(), 13);
    CHECK(recorder.trace(Detail::statements) == std::vector<std::string>{"message " + std::string(255, 'x')});
}

TEST_CASE("The database kind is recognised by its exact text alone") {
    CHECK(database_kind_of(u"[Microsoft SQL Server]") == DatabaseKind::sql_server);
    CHECK(database_kind_of(u"[Microsoft Access]") == DatabaseKind::access);
    for (const char16_t* text :
         {u"", u"[microsoft access]", u"[Microsoft Access] ", u"Microsoft SQL Server", u"SQLite"}) {
        CHECK(database_kind_of(text) == DatabaseKind::other);
    }
}

}  // namespace
}  // namespace vantlo::test
