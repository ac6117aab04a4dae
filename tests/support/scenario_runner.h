#pragma once

#include <functional>
#include <memory>

#include "tests/support/scenario.h"

namespace vantlo::test {

/// A database with the system's tables that scenarios run on.
class TestDatabase {
public:
    virtual ~TestDatabase() = default;

    [[nodiscard]] virtual Connection& connection() = 0;

    /// Empties every table that scenarios fill.
    void clear();
};

/// An SQLite database in memory, made from schema/sqlite.sql.
std::unique_ptr<TestDatabase> make_sqlite_database();

/// The statements that make the tables on SQLite.
std::string sqlite_schema();

/// What a run of a scenario did.
struct Outcome {
    std::int32_t result = 0;
    Recorder recorder;
    std::vector<std::string> ledger;
};

/// Fills the database, calls the member on a recording connection and platform, and reads the ledger.
/// With `fail_at` the n-th step of the call fails under the number `fail_with`; `before_call` runs right before the call.
Outcome run_scenario(const Scenario& scenario, TestDatabase& database, int fail_at = 0, ErrorNumber fail_with = 1004,
                     const std::function<void()>& before_call = {});

/// Calls the scenario's member on an object whose connection is the given one, with the given line.
std::int32_t call_member(const Scenario& scenario, Connection& connection, Line& line,
                         const std::function<void()>& before_call = {});

}  // namespace vantlo::test
