#include <doctest/doctest.h>

#include <random>

#include "ado/sqlite/sqlite_connection.h"
#include "dataaccess/platform.h"
#include "dataaccess/sql_literals.h"

// Any text becomes one literal that the engine reads back as the trimmed text, and never anything else.

namespace vantlo::test {
namespace {

constexpr int cases = 1'000'000;
constexpr int literals_a_statement = 100;

/// Random texts made of what could break out of a literal, and of every other sort of character.
class RandomTexts {
public:
    explicit RandomTexts(std::uint32_t seed) : random_(seed) {}

    Text next() {
        Text text;
        for (std::uint32_t length = below(12); length > 0; --length) text += piece();
        return text;
    }

    std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }

private:
    Text piece() {
        static constexpr const char16_t* dangerous[] = {
            u"'",   u"''",  u"\\",  u"\\'", u"\"",          u"--", u"/*", u"*/",   u";",  u"\n",   u"\r",
            u"\t",  u" ",   u"  ",  u"?",   u":x",          u"@p", u"$1", u"{",    u"}",  u"{d '", u"[",
            u"]",   u"%",   u"_",   u"`",   u"' or 1=1 --", u"|",  u"#",  u"null", u"0x", u"X'",   u"　",
            u"​", u"﻿", u"￾", u"￿", u"𠮷",          u"😀",  u"箱", u"é",    u"ﬁ",
        };
        switch (below(3)) {
            case 0: return dangerous[below(std::size(dangerous))];
            case 1: return Text(1, static_cast<char16_t>(1 + below(0x7F)));
            default: return from_code_point(below(0x10FFFF) + 1);
        }
    }

    static Text from_code_point(std::uint32_t code) {
        if (code >= 0xD800 && code < 0xE000) code -= 0x800;  // halves of pairs are no characters
        if (code < 0x10000) return Text(1, static_cast<char16_t>(code));
        code -= 0x10000;
        return {static_cast<char16_t>(0xD800 + (code >> 10)), static_cast<char16_t>(0xDC00 + (code & 0x3FF))};
    }

    std::mt19937 random_;
};

/// Runs `select literal,literal,…` for many texts at once and compares what comes back.
template <typename Literal, typename Expected>
void check_round_trips(Literal literal, Expected expected) {
    const Owned<SqliteConnection> database(new SqliteConnection(":memory:"));
    RandomTexts texts(20240305);
    int wrong = 0;
    for (int done = 0; done < cases; done += literals_a_statement) {
        std::vector<Text> sent;
        Text select = u"select ";
        for (int i = 0; i < literals_a_statement; ++i) {
            sent.push_back(texts.next());
            if (i > 0) select += u",";
            select += literal(sent.back());
        }
        const ResultTable result = database->run(select);
        REQUIRE(result.rows.size() == 1);
        REQUIRE(result.rows[0].size() == sent.size());
        for (std::size_t i = 0; i < sent.size(); ++i) {
            if (result.rows[0][i] == Variant(expected(sent[i]))) continue;
            if (++wrong <= 10) FAIL_CHECK("does not come back: " << to_utf8(sent[i]));
        }
    }
    CHECK(wrong == 0);
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
    check_round_trips([](const Text& text) { return GetSqlVal(text); },
                      [](const Text& text) { return Text(trim_blanks(text)); });
}

TEST_CASE("GetSqlVal in LIKE mode makes one literal too, whatever the text") {
    check_round_trips([](const Text& text) { return GetSqlVal(text, true); },
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
