#include "ado/sqlite/sqlite_failure.h"

#include <doctest/doctest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "ado/sqlite/sqlite_connection.h"
#include "support/failures.h"
#include "tests/support/temporary_folder.h"

namespace vantlo::test {
namespace {

Owned<SqliteConnection> database_with_a_table() {
    Owned<SqliteConnection> connection(new SqliteConnection(":memory:"));
    connection->run_script(
        "create table T (a nvarchar(9) not null primary key, b int check (b > 0)); insert into T values ('x', 1);"
        "create table Rowids (id integer primary key)");
    return connection;
}

TEST_CASE("An engine error comes under the number that ADO would report, with the engine's code and message") {
    struct Row {
        const char16_t* statement;
        ErrorNumber number;
        const char* account;
    };
    // clang-format off
    const Row rows[] = {
        {u"selct * from T",                     error::syntax_error,         "SQLite 1 (near \"selct\": syntax error): selct * from T"},
        {u"select * from T where",              error::syntax_error,         "SQLite 1 (incomplete input): select * from T where"},
        {u"select f(1)",                        error::syntax_error,         "SQLite 1 (no such function: f): select f(1)"},
        {u"insert into T (z) values (1)",       error::syntax_error,         "SQLite 1 (table T has no column named z): insert into T (z) values (1)"},
        {u"select * from 台账",                 error::no_such_table,        "SQLite 1 (no such table: 台账): select * from 台账"},
        {u"insert into Ledger values (1)",      error::no_such_table,        "SQLite 1 (no such table: Ledger): insert into Ledger values (1)"},
        {u"update T set c = 1",                 error::no_such_column,       "SQLite 1 (no such column: c): update T set c = 1"},
        {u"select * from T where a = \"x\"",    error::no_such_column,       "SQLite 1 (no such column: x): select * from T where a = \"x\""},
        {u"insert into T values ('x', 1)",      error::constraint_violated,  "SQLite 1555 (UNIQUE constraint failed: T.a): insert into T values ('x', 1)"},
        {u"insert into T values (null, 1)",     error::constraint_violated,  "SQLite 1299 (NOT NULL constraint failed: T.a): insert into T values (null, 1)"},
        {u"update T set b = 0",                 error::constraint_violated,  "SQLite 275 (CHECK constraint failed: b > 0): update T set b = 0"},
        {u"insert into Rowids values ('one')",  error::cannot_convert_value, "SQLite 20 (datatype mismatch): insert into Rowids values ('one')"},
        {u"select zeroblob(2147483647)",        error::value_does_not_fit,   "SQLite 18 (string or blob too big): select zeroblob(2147483647)"},
        {u"commit",                             error::unspecified,          "SQLite 1 (cannot commit - no transaction is active): commit"},
    };
    // clang-format on
    const Owned<SqliteConnection> connection = database_with_a_table();
    for (const Row& row : rows) {
        INFO(row.account);
        const Caught failure = caught([&] { connection->run(row.statement); });
        CHECK(failure.number == row.number);
        CHECK(failure.account == row.account);
    }
    CHECK(connection->run(u"select * from T").rows.size() == 1);
}

TEST_CASE("An engine error goes by its extended code, then by its primary code, then as unspecified") {
    struct Row {
        int code;
        ErrorNumber number;
    };
    // clang-format off
    const Row rows[] = {
        {SQLITE_PERM,                error::permission_denied},
        {SQLITE_BUSY,                error::locked_by_another},
        {SQLITE_BUSY_SNAPSHOT,       error::locked_by_another},
        {SQLITE_BUSY_TIMEOUT,        error::time_out},
        {SQLITE_LOCKED_SHAREDCACHE,  error::locked_by_another},
        {SQLITE_NOMEM,               error::out_of_memory},
        {SQLITE_IOERR_NOMEM,         error::out_of_memory},
        {SQLITE_READONLY_DIRECTORY,  error::permission_denied},
        {SQLITE_IOERR_FSYNC,         error::unspecified},
        {SQLITE_CORRUPT_INDEX,       error::unspecified},
        {SQLITE_FULL,                error::unspecified},
        {SQLITE_CANTOPEN_ISDIR,      error::unspecified},
        {SQLITE_PROTOCOL,            error::locked_by_another},
        {SQLITE_TOOBIG,              error::value_does_not_fit},
        {SQLITE_CONSTRAINT_TRIGGER,  error::constraint_violated},
        {SQLITE_CONSTRAINT_DATATYPE, error::cannot_convert_value},
        {SQLITE_MISMATCH,            error::cannot_convert_value},
        {SQLITE_AUTH,                error::permission_denied},
        {SQLITE_NOTADB,              error::unspecified},
        {SQLITE_INTERNAL,            error::unspecified},
        {SQLITE_MISUSE,              error::unspecified},
    };
    // clang-format on
    for (const Row& row : rows) {
        INFO(row.code);
        CHECK(sqlite_error_number(row.code, "no such table: T") == row.number);
    }
}

TEST_CASE("A message counts only at its beginning and only beside the general code") {
    CHECK(sqlite_error_number(SQLITE_ERROR, "no such table: T") == error::no_such_table);
    CHECK(sqlite_error_number(SQLITE_ERROR, "near \"no such table: T\": syntax error") == error::syntax_error);
    CHECK(sqlite_error_number(SQLITE_CONSTRAINT_TRIGGER, "no such table: T") == error::constraint_violated);
}

TEST_CASE("A file that is no database, or cannot be opened, says so at once") {
    const TemporaryFolder folder;
    std::ofstream(folder.file("notes.txt")) << std::string(4096, 'x');
    const Caught no_database = caught([&] { Owned(new SqliteConnection(folder.file("notes.txt"))); });
    CHECK(no_database.number == error::unspecified);
    CHECK(no_database.account.starts_with("SQLite 26 (file is not a database)"));

    const Caught missing = caught([&] { Owned(new SqliteConnection(folder.file("no.db"), {.may_create = false})); });
    CHECK(missing.number == error::unspecified);
    CHECK(missing.account == "SQLite 14 (unable to open database file): opening " + folder.file("no.db"));
    CHECK_FALSE(std::filesystem::exists(folder.file("no.db")));

    CHECK(caught([] { Owned(new SqliteConnection("")); }).number == error::bad_argument);
}

}  // namespace
}  // namespace vantlo::test
