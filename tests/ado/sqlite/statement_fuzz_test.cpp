// Statements at random, valid and broken: with literals parameterized or not, each does the same.

#include <doctest/doctest.h>

#include <random>

#include "ado/sqlite/parameterized_text.h"
#include "support/paired_connections.h"
#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

/// Makes statements out of pieces. Two of one seed make the same ones.
class StatementMaker {
public:
    explicit StatementMaker(unsigned seed) : random_(seed) {}

    std::string statement() {
        table_ = one_of({"A", "B"});
        std::string text = kept_shape();
        if (one_in(3)) text = any_statement();
        if (one_in(6)) spoil(text);
        return text;
    }

private:
    bool one_in(unsigned count) { return random_() % count == 0; }

    template <std::size_t count>
    std::string one_of(const char* const (&choices)[count]) {
        return choices[random_() % count];
    }

    std::string some(std::string (StatementMaker::*make)(), const std::string& separator) {
        std::string text = (this->*make)();
        while (one_in(2)) text += separator + (this->*make)();
        return text;
    }

    std::string table() { return one_in(20) ? one_of({"main.A", "V", "Log", "Missing"}) : table_; }
    std::string column() {
        if (one_in(30)) return one_of({"gone", "what", "A.n", "B.n", "rowid", "k", "t"});
        if (table_ == "A") return one_of({"n", "n", "t", "m", "r", "x", "u", "i", "A.n"});
        return one_of({"n", "n", "k", "d", "f"});
    }
    std::string literal() {
        if (one_in(3)) return std::to_string(random_() % 20);
        if (one_in(4)) return "'k" + std::to_string(random_() % 9) + "'";
        if (one_in(20)) return one_of({"x'41'", "0x10", "1.", ".5", "5e", "?", ":x", "9223372036854775808"});
        return one_of({"0",
                       "1",
                       "-1",
                       "5",
                       "-5",
                       "13",
                       "007",
                       "2.5",
                       "-2.5",
                       "0.1",
                       "1e3",
                       "5.0",
                       "-0.0",
                       "1E+15",
                       "2.5e-7",
                       "1e400",
                       "'x'",
                       "'X'",
                       "''",
                       "'it''s'",
                       "'5'",
                       "'-5'",
                       "'5.0'",
                       "' 5 '",
                       "'1e3'",
                       "null",
                       "'仓库'",
                       "'𠮷'",
                       "'--'",
                       "'/*?:x'",
                       "'2'",
                       "70000",
                       "'a;b'",
                       "'2024-02-29'",
                       "1000000",
                       "999999999999999999",
                       "9223372036854775807",
                       "123456789.12345678901234567890"});
    }
    std::string operand() { return one_in(2) ? column() : literal(); }
    std::string sum() {
        std::string text = operand();
        while (one_in(4)) text += one_of({" + ", " - ", "*", "/", "-", "+", " -"}) + operand();
        return text;
    }
    std::string comparison() {
        return column() + one_of({"=", " = ", "=", "<", ">", "<=", ">=", "<>", "!=", "=="}) + sum();
    }
    std::string condition() {
        std::string text = comparison();
        while (one_in(2)) text += one_of({" and ", " and ", " or "}) + comparison();
        return text;
    }
    std::string where() { return one_in(6) ? "" : " where " + condition(); }
    std::string assignment() { return column() + one_of({"=", " = "}) + sum(); }

    // Mostly one of the forms whose literals are parameterized.
    std::string kept_shape() {
        switch (random_() % 8) {
            case 0: return "update " + table() + " set " + some(&StatementMaker::assignment, ",") + where();
            case 1: return "update B set n=n+" + literal() + ",f=" + literal() + " where k=" + literal();
            case 2:
                return "insert into A(n,m,r,t,x,u) values(" + literal() + "," + literal() + "," + literal() + "," +
                       literal() + "," + sum() + "," + literal() + ")";
            case 3:
                return "insert into B values(" + literal() + "," + literal() + "," + literal() + "," + literal() + ")";
            case 4: return "delete from " + table() + " where " + condition() + " and " + comparison();
            case 5: return "select " + some(&StatementMaker::column, ",") + " from " + table() + where();
            case 6: return "select A.*,k from A left join B on A.n = B.n" + where();
            default: return "Select * from " + table() + where() + one_of({"", " order by n", " order by t desc, n"});
        }
    }

    std::string any_condition() {
        switch (random_() % 9) {
            case 0: return column() + " like " + literal();
            case 1: return column() + " in (" + some(&StatementMaker::literal, ",") + ")";
            case 2: return column() + " between " + literal() + " and " + literal();
            case 3: return "not " + comparison();
            case 4: return "(" + condition() + ")";
            case 5: return column() + " is " + literal();
            case 6: return literal();
            case 7: return "abs(" + sum() + ")=" + literal();
            default: return column() + "=" + literal() + " collate nocase";
        }
    }

    std::string any_statement() {
        switch (random_() % 14) {
            case 0: return "select " + some(&StatementMaker::operand, ",") + " from " + table() + where();
            case 1: return "select " + some(&StatementMaker::literal, ",");
            case 2:
                return "select * from " + table() + where() + " order by " + operand() + (one_in(2) ? " limit 5" : "");
            case 3: return "select n, count(*), sum(n) from " + table_ + where() + " group by " + operand();
            case 4: return "select n from A" + where() + " union select n from B" + where() + " order by " + literal();
            case 5: return "select * from " + table() + " where " + any_condition() + " and " + comparison();
            case 6: return "insert or replace into B values(" + literal() + "," + literal() + ",null,1)";
            case 7: return "insert into B(k,n) values(" + literal() + "," + literal() + "),('z'," + literal() + ")";
            case 8: return "update A set " + assignment() + where() + " returning " + operand();
            case 9: return "delete from " + table() + where() + " limit " + literal();
            case 10:
                return one_of({"begin", "begin immediate", "commit", "rollback", "savepoint s", "release s",
                               "rollback to s", "begin", "rollback"});
            case 11:
                return one_of({"create index if not exists AR on A (r)", "drop index if exists AR", "analyze",
                               "create temp table if not exists A (n nvarchar(9), t int, extra real)",
                               "insert into temp.A values (5, 6, 7)", "drop table if exists temp.A",
                               "alter table A add column gone money default 2.5", "alter table A drop column gone",
                               "alter table B rename column f to gone", "alter table B rename column gone to f",
                               "delete from Log", "reindex", "delete from B", "delete from A"});
            case 12:
                return "pragma " +
                       one_of({"reverse_unordered_selects = 1", "reverse_unordered_selects = 0",
                               "full_column_names = 1", "full_column_names = 0", "ignore_check_constraints = 1",
                               "ignore_check_constraints = 0", "case_sensitive_like = 1", "query_only = 1",
                               "query_only = 0", "query_only = 0", "foreign_keys = 1", "user_version"});
            default: return "explain query plan " + kept_shape();
        }
    }

    // Takes a stretch out, puts one in, or puts one of its own stretches in another place.
    void spoil(std::string& text) {
        for (unsigned times = 1 + random_() % 2; times > 0 && !text.empty(); --times) {
            const std::size_t place = random_() % text.size();
            const std::size_t length = 1 + random_() % 6;
            switch (random_() % 3) {
                case 0: text.erase(place, length); break;
                case 1: {
                    text.insert(place, one_of({"'",        "''",  " ",  "-", "--", "/*",   "*/",      ";",   "?",
                                               "(",        ")",   ",",  "0", "5",  "5 ",   ".",       "e",   "x",
                                               "\"",       "[",   "]",  "`", "$",  ":x",   " or ",    " 5 ", " 'x' ",
                                               " limit 5", " -5", "\t", "é", "\n", "null", " and 5=5"}));
                    break;
                }
                default: text.insert(place, text.substr(random_() % text.size(), length)); break;
            }
        }
    }

    std::mt19937 random_;
    std::string table_;  // that most of the statement is about
};

bool is_parameterized(const std::string& statement) {
    ParameterizedText parameterized;
    return parameterize(statement, parameterized) && is_understood(parameterized.shape);
}

TEST_CASE("Statements at random do the same with literals parameterized or not") {
    StatementMaker maker(7);
    int count = 0;
    int with_parameters = 0;
    int failed = 0;
    for (int database = 0; database < 40; ++database) {
        PairedConnections pair;
        pair.run_script(tables_of_many_kinds);
        for (int i = 0; i < 1000; ++i) {
            const std::string statement = maker.statement();
            INFO("database " << database << ", statement " << i << ": " << statement);
            const bool is_same = pair.run(from_utf8(statement));
            INFO("parameterized: " << pair.parameterized.failure.account << ", "
                                   << pair.parameterized.result.rows.size() << " rows");
            INFO("plain:  " << pair.plain.failure.account << ", " << pair.plain.result.rows.size() << " rows");
            REQUIRE(is_same);
            ++count;
            if (is_parameterized(statement)) ++with_parameters;
            if (pair.plain.failure.number != 0) ++failed;
            if (i % 50 != 0) continue;
            for (const TextView table : {u"main.A", u"B", u"Log"}) {
                REQUIRE(pair.run(Text(u"select * from ") + Text(table)));
            }
        }
    }
    // Otherwise the statements say little: too few parameterized, or hardly any that succeed or fail.
    CHECK(with_parameters * 3 > count);
    CHECK(failed * 5 > count);
    CHECK(failed * 3 < count * 2);
    MESSAGE(count << " statements, " << with_parameters << " with literals parameterized, " << failed << " failed");
}

}  // namespace
}  // namespace vantlo::test
