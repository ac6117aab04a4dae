#include <doctest/doctest.h>

#include <random>

#include "ado/sqlite/sqlite_connection.h"
#include "automation/calendar.h"
#include "dataaccess/shell_hooks.h"
#include "dataaccess/sql_literals.h"
#include "tests/support/random_texts.h"

// Any text becomes one literal that the engine reads back as the trimmed text, and never anything else.

namespace vantlo::test {
namespace {

constexpr int cases = 1'000'000;

template <typename Literal, typename Expected>
void check_on_sqlite(Literal literal, Expected expected) {
    const Owned<SqliteConnection> database(new SqliteConnection(":memory:"));
    CHECK(texts_that_do_not_come_back(*database, cases, literal, expected) == 0);
}

/// Whether a pattern in the syntax of SQL Server and Access matches a text: %, _ and one-character brackets.
bool like(TextView text, TextView pattern) {
    while (!pattern.empty()) {
        if (pattern[0] == u'%') {
            for (std::size_t skipped = 0; skipped <= text.size(); ++skipped) {
                if (like(text.substr(skipped), pattern.substr(1))) return true;
            }
            return false;
        }
        if (text.empty()) return false;
        const bool bracketed = pattern[0] == u'[' && pattern.size() > 2 && pattern[2] == u']';
        const bool any = !bracketed && pattern[0] == u'_';
        if (!any && text[0] != (bracketed ? pattern[1] : pattern[0])) return false;
        pattern.remove_prefix(bracketed ? 3 : 1);
        text.remove_prefix(1);
    }
    return text.empty();
}

TEST_CASE("GetSqlVal makes of a million texts one literal each that the engine reads back trimmed") {
    check_on_sqlite([](const Text& text) { return GetSqlVal(text); },
                    [](const Text& text) { return Text(trim_blanks(text)); });
}

TEST_CASE("GetSqlVal in LIKE mode makes one literal too, whatever the text") {
    check_on_sqlite([](const Text& text) { return GetSqlVal(text, true); },
                    [](const Text& text) {
                        const Text escaped = to_text(Get_LikeStr(text));
                        Text read;  // its doubled quotes come back single
                        for (std::size_t i = 0; i < escaped.size(); ++i) {
                            read += escaped[i];
                            if (escaped[i] == u'\'') ++i;
                        }
                        return read;
                    });
}

TEST_CASE("Get_LikeStr makes a pattern that matches the trimmed text and not its neighbours") {
    RandomTexts texts(7);
    for (int i = 0; i < 100'000; ++i) {
        const Text text = texts.next();
        const Text trimmed = replace_all(trim_blanks(text), u'\'', u"''");
        const Text pattern = to_text(Get_LikeStr(text));
        REQUIRE(like(trimmed, pattern));
        Text neighbour = trimmed;
        if (neighbour.empty()) continue;
        neighbour[texts.below(static_cast<std::uint32_t>(neighbour.size()))] ^= 1;
        REQUIRE(!like(neighbour, pattern));
    }
}

TEST_CASE("Get_DateStr makes of every second a literal that reads back as that second") {
    project_state().database_kind = DatabaseKind::sql_server;
    std::mt19937_64 random(20240305);
    for (int i = 0; i < 200'000; ++i) {
        // Whole seconds of the years 1901 to 9999.
        const auto seconds =
            static_cast<double>(367LL * 86400 + static_cast<long long>(random() % (2'958'099ULL * 86400)));
        const Date date{seconds / 86400};
        const Text literal = Get_DateStr(date, date_form::whole);
        REQUIRE(literal.size() == 21);
        const auto read = date_from_text(TextView(literal).substr(1, 19));
        REQUIRE(read.has_value());
        REQUIRE(parts_of(*read) == parts_of(date));
    }
    project_state().database_kind = DatabaseKind::other;
}

}  // namespace
}  // namespace vantlo::test
