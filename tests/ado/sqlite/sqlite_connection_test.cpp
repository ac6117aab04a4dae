#include "ado/sqlite/sqlite_connection.h"

#include <doctest/doctest.h>

#include <string>
#include <thread>

#include "support/failures.h"
#include "tests/support/printing.h"
#include "tests/support/temporary_folder.h"

namespace vantlo::test {
namespace {

using namespace std::chrono_literals;

Owned<SqliteConnection> open_memory() { return Owned(new SqliteConnection(":memory:")); }

Variant only_value(NativeConnection& connection, TextView statement) {
    const ResultTable result = connection.run(statement);
    REQUIRE(result.rows.size() == 1);
    REQUIRE(result.columns.size() == 1);
    return result.rows[0][0];
}

TEST_CASE("SqliteConnection reads a result to its end") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script(
        "create table T (a nvarchar(9), b int); insert into T values ('x', 1), ('y', 2), ('z', null)");
    const ResultTable result = connection->run(u"select * from T order by b desc");
    CHECK(result.yields_rows);
    CHECK(result.columns == std::vector<Text>{u"a", u"b"});
    CHECK(result.rows == std::vector<std::vector<Variant>>{{u"y", 2}, {u"x", 1}, {u"z", Null{}}});
}

TEST_CASE("SqliteConnection's recordset sees none of the rows that come later") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script("create table T (a int); insert into T values (1)");
    const RecordsetVariable recordset = connection->execute(u"select * from T");
    connection->execute(u"insert into T values (2)");
    recordset->move_next();
    CHECK(recordset->eof());
}

TEST_CASE("SqliteConnection tells a result without rows from a statement that has none") {
    const Owned<SqliteConnection> connection = open_memory();
    CHECK(connection->execute(u"create table T (a int)")->state() == 0);
    CHECK(connection->execute(u"insert into T values (1)")->state() == 0);
    CHECK(connection->execute(u"update T set a = 2")->state() == 0);
    CHECK(connection->execute(u"select * from T where a = 3")->state() == 1);
    CHECK(connection->run(u"select * from T where a = 3").columns == std::vector<Text>{u"a"});
}

TEST_CASE("SqliteConnection carries every text whole, in and out") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script("create table T (a nvarchar(9000))");
    const Text texts[] = {
        u"",           u"仓库 一号",          u"𠮷野家 😀",           u"''quotes''",
        u"\\'\\",      u"{d}?:x@y$z--/* */;", u"\t\r\n\u0001\u007F", u"\uFEFF\uFFFE\uFFFF\uFDD0\uFFFD",
        u"\U0010FFFF", Text(8000, u'料'),
    };
    for (const Text& text : texts) {
        INFO(to_utf8(text));
        connection->run(u"delete from T");
        connection->run(u"insert into T values ('" + replace_all(text, u'\'', u"''") + u"')");
        CHECK(only_value(*connection, u"select a from T") == Variant(text));
    }
}

TEST_CASE("SqliteConnection reads column names in any script, and finds fields by them") {
    const Owned<SqliteConnection> connection = open_memory();
    CHECK(connection->execute(u"select 5 as 数量")->field(u"数量") == Variant(5));
}

TEST_CASE("SqliteConnection refuses a NUL or half a surrogate pair before the engine sees it") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script("create table T (a nvarchar(9))");
    struct Row {
        Text value;
        const char* account;
    };
    const Row rows[] = {
        {Text(u"a\0b", 3), "the statement has a NUL in it, and the engine would stop reading there"},
        {Text(1, char16_t{0xD842}), "the statement has half of a surrogate pair in it, which is no character"},
        {Text(1, char16_t{0xDFB7}), "the statement has half of a surrogate pair in it, which is no character"},
    };
    for (const Row& row : rows) {
        const Caught failure = caught([&] { connection->run(u"insert into T values ('" + row.value + u"')"); });
        CHECK(failure.number == error::bad_argument);
        CHECK(failure.account == row.account);
    }
    const Text after_the_end = Text(u"insert into T values (1)") + Text(u"\0;", 2);
    CHECK(caught([&] { connection->run(after_the_end); }).number == error::bad_argument);
    CHECK(only_value(*connection, u"select count(*) from T") == Variant(0));
}

TEST_CASE("SqliteConnection runs exactly one statement a call") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script("create table T (a nvarchar(9)); insert into T values ('x')");
    for (const TextView tail : {u"", u";", u" ; ", u";;", u"; -- and so on; delete", u" -- \n;", u"/* ; */",
                                u";/**/ /*", u";--", u"\t\r\n\f"}) {
        INFO(to_utf8(tail));
        CHECK(caught([&] { connection->run(Text(u"select * from T") + Text(tail)); }).number == 0);
    }
    for (const TextView tail : {u"delete from T", u"selct", u"-- c\ndelete from T", u"/* c */ delete from T", u"--\n-",
                                u"; 'x'", u"\u3000", u"/**/x"}) {
        INFO(to_utf8(tail));
        const Caught failure = caught([&] { connection->run(Text(u"delete from T;") + Text(tail)); });
        CHECK(failure.number == error::syntax_error);
        CHECK(failure.account == "one call runs one statement, not several: delete from T;" + to_utf8(tail));
    }
    for (const TextView nothing : {u"", u" ", u";", u"-- c", u"/* c"}) {
        CHECK(caught([&] { connection->run(nothing); }).number == error::syntax_error);
    }
    CHECK(only_value(*connection, u"select count(*) from T") == Variant(1));
    connection->run(u"insert into T values ('a;b--c')");
    CHECK(only_value(*connection, u"select count(*) from T") == Variant(2));
}

TEST_CASE("SqliteConnection reads two minus signs as the start of a comment") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script("create table T (a int, q money); insert into T values (1, 5), (2, 7)");
    connection->run(u"update T set q = q--3 where a = 1");
    CHECK(connection->run(u"select q from T order by a").rows ==
          std::vector<std::vector<Variant>>{{Currency::from_whole(5)}, {Currency::from_whole(7)}});
    connection->run(u"update T set a = 9, q = q--3 where a = 1");
    CHECK(only_value(*connection, u"select count(*) from T where a = 9") == Variant(2));
}

TEST_CASE("SqliteConnection applies nothing of a statement that fails half-way") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script("create table T (a int check (a < 3)); insert into T values (1), (2)");
    CHECK(caught([&] { connection->run(u"update T set a = a + 1"); }).number == error::constraint_violated);
    CHECK(only_value(*connection, u"select sum(a) from T") == Variant(3));
    CHECK(caught([&] { connection->run(u"select abs(-9223372036854775808) from T"); }).number == error::syntax_error);
}

TEST_CASE("SqliteConnection commits a transaction, or rolls it back") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script("create table T (a int)");
    const auto count = [&] { return only_value(*connection, u"select count(*) from T"); };

    connection->begin();
    connection->run(u"insert into T values (1)");
    connection->commit();
    CHECK(count() == Variant(1));

    connection->begin();
    connection->run(u"insert into T values (2)");
    connection->roll_back();
    CHECK(count() == Variant(1));

    connection->roll_back();  // with no transaction open
    CHECK(caught([&] { connection->commit(); }).number == error::unspecified);
    connection->begin();
    CHECK(caught([&] { connection->begin(); }).number == error::unspecified);
    connection->roll_back();
}

TEST_CASE("SqliteConnection waits for another's lock for the busy time-out and then says who has it") {
    const TemporaryFolder folder;
    const std::string file = folder.file("台账.db");
    const Owned<SqliteConnection> first(new SqliteConnection(file));
    const Owned<SqliteConnection> second(new SqliteConnection(file, {.busy_time_out = 50ms}));
    first->run_script("create table T (a int)");

    first->begin();
    first->run(u"insert into T values (1)");
    CHECK(only_value(*second, u"select count(*) from T") == Variant(0));  // a reader does not wait
    const auto start = std::chrono::steady_clock::now();
    const Caught failure = caught([&] { second->begin(); });
    CHECK(std::chrono::steady_clock::now() - start >= 45ms);
    CHECK(failure.number == error::locked_by_another);
    CHECK(failure.account == "SQLite 5 (database is locked): begin immediate");

    first->commit();
    second->begin();
    CHECK(only_value(*second, u"select count(*) from T") == Variant(1));
    second->roll_back();
}

TEST_CASE("SqliteConnection keeps a file with a write-ahead log that is on the disk at each commit") {
    const TemporaryFolder folder;
    const Owned<SqliteConnection> connection(new SqliteConnection(folder.file("a.db")));
    CHECK(only_value(*connection, u"pragma journal_mode") == Variant(u"wal"));
    CHECK(only_value(*connection, u"pragma synchronous") == Variant(2));
}

TEST_CASE("SqliteConnection leaves in the file what was committed, and nothing else") {
    const TemporaryFolder folder;
    {
        const Owned<SqliteConnection> connection(new SqliteConnection(folder.file("a.db")));
        connection->run_script("create table T (a int); insert into T values (1)");
        connection->begin();
        connection->run(u"insert into T values (2)");
    }
    const Owned<SqliteConnection> again(new SqliteConnection(folder.file("a.db"), {.may_create = false}));
    CHECK(only_value(*again, u"select a from T") == Variant(1));
}

TEST_CASE("SqliteConnection lets several threads open one new file at once, a connection each") {
    const TemporaryFolder folder;
    const std::string file = folder.file("new.db");
    std::vector<Caught> failures(8);
    {
        std::vector<std::jthread> threads;
        for (Caught& failure : failures) {
            threads.emplace_back([&] {
                failure = caught([&] {
                    const Owned<SqliteConnection> connection(new SqliteConnection(file));
                    connection->run_script("create table if not exists T (a int); insert into T values (1)");
                });
            });
        }
    }
    for (const Caught& failure : failures) CHECK(failure.account == "");
    const Owned<SqliteConnection> connection(new SqliteConnection(file));
    CHECK(only_value(*connection, u"select count(*) from T") == Variant(8));
}

TEST_CASE("SqliteConnection runs a script statement by statement") {
    const Owned<SqliteConnection> connection = open_memory();
    connection->run_script(
        "-- a comment; with a semicolon\n"
        "create table T (a nvarchar(9));\n"
        "create trigger Twice after insert on T when new.a = 'x' begin insert into T values ('y;'); end;\n"
        "insert into T values ('x'); select * from T;;\n"
        "/* the end */");
    CHECK(only_value(*connection, u"select group_concat(a, ',') from T") == Variant(u"x,y;"));
    connection->run_script("");
}

TEST_CASE("SqliteConnection names the line on which a script fails, and keeps what came before") {
    const Owned<SqliteConnection> connection = open_memory();
    const Caught failure =
        caught([&] { connection->run_script("create table T (a int);\n\n-- next\ncreat table U (a int)"); });
    CHECK(failure.number == error::syntax_error);
    CHECK(failure.account == "SQLite 1 (near \"creat\": syntax error): the statement on line 4 of the script");
    CHECK(only_value(*connection, u"select count(*) from T") == Variant(0));
}

TEST_CASE("SqliteConnection names the engine and its version") {
    CHECK(open_memory()->engine().starts_with("SQLite 3."));
}

}  // namespace
}  // namespace vantlo::test
