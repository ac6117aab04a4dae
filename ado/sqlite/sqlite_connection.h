#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "ado/native/native_connection.h"
#include "ado/sqlite/sqlite_handle.h"
#include "ado/sqlite/statement_cache.h"

namespace vantlo {

struct SqliteOptions {
    bool may_create = true;                         ///< whether a file that does not exist is made
    bool is_for_reading = false;                    ///< whether nothing is written, neither the file nor beside it
    std::chrono::milliseconds busy_time_out{5000};  ///< how long a statement waits for another connection's lock
    bool parameterizes_literals = true;             ///< whether statements that differ only in literals share one plan
};

/// An SQLite database: a file, or one in memory that lasts as long as the connection.
///
/// A file is kept with a write-ahead log, so that readers and the one writer do not wait for each other, and a commit
/// returns once it is on the disk: a saved bill survives a power cut.
///
/// A connection for reading leaves the file as it is and needs no right to write it or its folder. Without those it takes a
/// file that nobody else has open for one that nobody changes meanwhile.
///
/// Statements that differ only in their literals share one prepared statement. Results, failures and what is stored are
/// those of the plain text; only the order of rows that no `order by` asks for can be another, and that on tables with
/// indexes on part of the rows or on expressions.
///
/// Units    Quantities in `money` columns are stored as binary floating point (whole ones as integers) and read rounded
///          to four decimals. Adding and subtracting n quantities on one row, none of its values ever beyond m, reads
///          exact as long as n times the spacing of doubles at m stays under 0.00005: a million postings below 262 144
///          units, a hundred thousand below 4 million, a thousand below 268 million.
/// Errors   Failure; its account begins with the engine's own code and message, `SQLite 1 (no such table: Ledger)`.
///
/// A connection belongs to one thread at a time: nothing in it is locked.
class SqliteConnection final : public NativeConnection {
public:
    /// Opens the database file of that path, given in UTF-8, or a database in memory for `:memory:`.
    explicit SqliteConnection(const std::string& file, const SqliteOptions& options = {});

    /// Runs exactly one statement.
    /// Errors   bad_argument for a text that is not well-formed UTF-16 or has a NUL in it, syntax_error for a text of no
    ///          or several statements, both before anything runs (but the engine obeys some pragmas while it compiles).
    ResultTable run(TextView statement) override;

    /// Begins a transaction with the write lock, so that no later statement fails for lack of it.
    void begin() override;
    void commit() override;
    /// Does nothing if no transaction is open: the engine ends it after some failures.
    void roll_back() override;

    [[nodiscard]] Remedy remedy() const override;

    void run_script(const std::string& script) override;

    [[nodiscard]] const Dialect& dialect() const override { return dialect_named("sqlite"); }
    [[nodiscard]] std::string engine() const override;

private:
    ~SqliteConnection() override = default;

    SqliteHandle database_;
    bool is_for_reading_;
    std::optional<StatementCache> statement_cache_;  // after the database: it ends first
};

}  // namespace vantlo
