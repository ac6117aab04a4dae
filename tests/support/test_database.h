#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ado/native/native_connection.h"
#include "tests/support/scenario.h"

namespace vantlo::test {

/// A database with the system's tables that scenarios run on. What its engine does differently lives here.
class TestDatabase {
public:
    /// Opens a database, as open_connection names it, and makes the tables.
    explicit TestDatabase(std::string_view database);
    TestDatabase(const TestDatabase&) = delete;
    TestDatabase& operator=(const TestDatabase&) = delete;
    ~TestDatabase();

    [[nodiscard]] NativeConnection& connection() { return *connection_; }

    /// The connection for the component: a number in a widened column comes back as the column's own type has it.
    [[nodiscard]] Connection& component_connection();

    /// Empties every table that scenarios fill.
    void clear();

    /// Empties the tables and inserts rows, every value as it stands.
    ///
    /// SQLite keeps any value in any column. On other engines a column whose type cannot keep a value, such as a quantity
    /// that is no number, has a wider type until the next `clear`. `columns` gives columns a type until then, on SQLite.
    void fill(const std::vector<TableRow>& rows, const std::vector<ColumnType>& columns = {});

    /// The ledger that a scenario leaves: what it says itself, but on MariaDB, where two minus signs begin a comment only
    /// before a blank, the ledger of its statements with the signs apart.
    std::vector<std::string> expected_ledger(const Scenario& scenario);

private:
    class OwnTypes;

    void widen(const TableRow& row);
    void declare(const ColumnType& column);

    Owned<NativeConnection> connection_;
    std::unique_ptr<OwnTypes> own_types_;
    std::vector<Text> narrowing_;  // the statements that give widened columns their types back
    std::vector<Text> restoring_;  // the same for columns that were given a type
};

/// The statements of the schema file that makes the tables for a dialect.
std::string schema_of(std::string_view dialect);

/// An SQLite database in memory.
std::unique_ptr<TestDatabase> make_sqlite_database();

/// The database of this run: the server that VANTLO_TEST_ODBC names by an ODBC connection string, else SQLite in memory.
///
/// The server's database is to be one of the tests' own: they make the tables and empty them.
/// Errors   std::runtime_error for a database whose ledger has rows, which nobody would want to lose.
std::unique_ptr<TestDatabase> make_test_database();

}  // namespace vantlo::test
