#include "ado/sqlite/statement_cache.h"

#include <doctest/doctest.h>
#include <sqlite3.h>

#include <memory>
#include <random>

#include "support/paired_connections.h"
#include "tests/support/printing.h"
#include "tests/support/temporary_folder.h"

namespace vantlo::test {
namespace {

using namespace std::chrono_literals;

/// A cache over a database in memory, seen from the engine's side.
class WatchedCache {
public:
    explicit WatchedCache(const char* script) {
        sqlite3_open(":memory:", &database_);
        REQUIRE(sqlite3_exec(database_, script, nullptr, nullptr, nullptr) == SQLITE_OK);
        cache_ = std::make_unique<StatementCache>(database_);
    }
    WatchedCache(const WatchedCache&) = delete;
    WatchedCache& operator=(const WatchedCache&) = delete;
    ~WatchedCache() {
        cache_.reset();
        CHECK(sqlite3_close(database_) == SQLITE_OK);  // which it refuses while a statement is left
    }

    std::optional<ResultTable> run(const std::string& statement) { return cache_->run(statement); }

    /// The statements that are prepared now, with what is bound to them. Requires: none of them runs.
    std::vector<std::string> prepared() const {
        std::vector<std::string> texts;
        for (sqlite3_stmt* each = nullptr; (each = sqlite3_next_stmt(database_, each)) != nullptr;) {
            CHECK(sqlite3_stmt_busy(each) == 0);
            char* const text = sqlite3_expanded_sql(each);
            texts.emplace_back(text);
            sqlite3_free(text);
        }
        return texts;
    }

private:
    sqlite3* database_ = nullptr;
    std::unique_ptr<StatementCache> cache_;
};

TEST_CASE("StatementCache prepares statements of one shape once, and leaves nothing bound") {
    WatchedCache cache("create table T (a int, b nvarchar(9)); insert into T values (5, 'x'), (6, 'it''s')");
    const auto rows = [&](const std::string& statement) { return cache.run(statement).value().rows; };
    CHECK(rows("select * from T where a=5") == std::vector<std::vector<Variant>>{{5, u"x"}});
    CHECK(rows("select * from T where a=6") == std::vector<std::vector<Variant>>{{6, u"it's"}});
    CHECK(rows("select * from T where a='5'") == std::vector<std::vector<Variant>>{{5, u"x"}});
    CHECK(cache.prepared() == std::vector<std::string>{"select * from T where a=NULL"});
    CHECK(rows("select * from T where b='it''s'") == std::vector<std::vector<Variant>>{{6, u"it's"}});
    CHECK(cache.prepared().size() == 2);
}

TEST_CASE("StatementCache does nothing with a statement that must run as plain text") {
    WatchedCache cache("create table T (a int)");
    for (const char* const statement :
         {"select 5", "insert into T values (5); ", "insert into T select 5", "insert into Missing values (5)",
          "insert into T values (5, 6)", "delete from T where b=5", "begin", ""}) {
        INFO(std::string(statement));
        CHECK(!cache.run(statement));
    }
    CHECK(cache.prepared().empty());
}

TEST_CASE("StatementCache keeps the 64 shapes that were used last") {
    WatchedCache cache("create table T (a int)");
    const std::string first = "select * from T where a=5";
    cache.run(first);
    std::string other = first;
    for (int i = 0; i < 100; ++i) {
        other += " or a=5";
        cache.run(other);
        cache.run(first);
    }
    const std::vector<std::string> prepared = cache.prepared();
    CHECK(prepared.size() == 64);
    CHECK(std::ranges::find(prepared, "select * from T where a=NULL") != prepared.end());
}

TEST_CASE("StatementCache does not keep a statement that failed") {
    WatchedCache cache("create table T (a int check (a < 9))");
    CHECK(cache.run("insert into T values (8)"));
    CHECK(cache.prepared().size() == 1);
    const Caught failure = caught([&] { cache.run("insert into T values (9)"); });
    CHECK(failure.number == error::constraint_violated);
    CHECK(failure.account == "SQLite 275 (CHECK constraint failed: a < 9): insert into T values (9)");
    CHECK(cache.prepared().empty());
    CHECK(cache.run("insert into T values (7)"));
}

TEST_CASE("A kept statement sees the table as it is now") {
    PairedConnections pair;
    pair.run_script("create table T (a int, b money); insert into T values (5, 2.5)");
    for (const TextView change :
         {u"select 5", u"alter table T add column c nvarchar(9) default 'x'", u"alter table T rename column b to d",
          u"create index TA on T (a)", u"create temp table T (e int)", u"insert into temp.T values (7)",
          u"drop table temp.T", u"drop table T", u"create table T (a date, b)", u"insert into T values (5, 6)",
          u"pragma full_column_names = on", u"pragma short_column_names = off"}) {
        INFO(to_utf8(change));
        CHECK(pair.run(change));
        CHECK(pair.run(u"select * from T where a=5"));
        CHECK(pair.run(u"select * from T where a='5'"));
    }
    CHECK(pair.parameterized.result.columns == std::vector<Text>{u"T.a", u"T.b"});
}

TEST_CASE("A kept statement sees what another connection did to its table") {
    const TemporaryFolder folder;
    const Owned<SqliteConnection> first(new SqliteConnection(folder.file("a.db")));
    const Owned<SqliteConnection> second(new SqliteConnection(folder.file("a.db")));
    first->run_script("create table T (a int); insert into T values (5)");
    CHECK(first->run(u"select * from T where a=5").columns == std::vector<Text>{u"a"});
    second->run_script("alter table T add column b money default 2.5");
    const ResultTable result = first->run(u"select * from T where a=5");
    CHECK(result.columns == std::vector<Text>{u"a", u"b"});
    CHECK(result.rows == std::vector<std::vector<Variant>>{{5, Currency::from_double(2.5)}});
}

TEST_CASE("A kept statement holds no lock, whether it succeeded or failed") {
    const TemporaryFolder folder;
    const Owned<SqliteConnection> first(new SqliteConnection(folder.file("a.db"), {.busy_time_out = 0ms}));
    const Owned<SqliteConnection> second(new SqliteConnection(folder.file("a.db"), {.busy_time_out = 0ms}));
    first->run_script("create table T (a int unique)");
    const auto insert = [](SqliteConnection& connection, TextView value) {
        return caught([&] { connection.run(Text(u"insert into T values (") + Text(value) + u")"); }).number;
    };
    CHECK(insert(*first, u"5") == 0);
    CHECK(insert(*second, u"6") == 0);
    CHECK(insert(*first, u"5") == error::constraint_violated);
    CHECK(insert(*second, u"7") == 0);
    first->begin();
    CHECK(insert(*second, u"8") == error::locked_by_another);
    CHECK(second->remedy() == Remedy::save_again);
    CHECK(insert(*first, u"9") == 0);
    CHECK(insert(*first, u"9") == error::constraint_violated);
    first->roll_back();
    CHECK(insert(*second, u"9") == 0);
    first->run_script("drop table T; create table T (a int); vacuum");
}

TEST_CASE("A number that became a parameter is the one that the engine reads in the text") {
    PairedConnections pair;
    pair.run_script("create table T (r real, m money, t nvarchar(99), x blob); insert into T values (0, 0, 0, 0)");
    std::mt19937 random(20);
    const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
    const auto digits = [&](int count) {
        std::string text;
        while (count-- > 0) text += static_cast<char>('0' + below(10));
        return text;
    };
    for (int i = 0; i < 10'000; ++i) {
        std::string number(below(4) == 0 ? 1 : 0, '-');
        number += digits(1 + below(below(2) == 0 ? 4 : 25));
        if (below(3) != 0) number.append(".").append(digits(1 + below(below(3) == 0 ? 30 : 4)));
        if (below(4) == 0) number += (below(2) == 0 ? "e" : "E-") + std::to_string(below(below(2) == 0 ? 10 : 330));
        const Text text = from_utf8(number);
        INFO(number);
        REQUIRE(pair.run(u"update T set r = " + text + u", m = " + text + u", t = " + text + u", x = " + text));
        REQUIRE(pair.run(u"select r, m, t, x from T"));
        REQUIRE(pair.run(u"select r from T where x = " + text + u" and t = " + text));
    }
}

}  // namespace
}  // namespace vantlo::test
