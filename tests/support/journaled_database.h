#pragma once

#include "bookkeeping/journal.h"
#include "tests/support/test_database.h"

namespace vantlo::test {

/// A test database with the journal of movements, which is gone with it.
class JournaledDatabase {
public:
    explicit JournaledDatabase(std::unique_ptr<TestDatabase> database = make_test_database())
        : database_(std::move(database)) {
        switch_journal_on(connection());
    }
    JournaledDatabase(const JournaledDatabase&) = delete;
    JournaledDatabase& operator=(const JournaledDatabase&) = delete;
    ~JournaledDatabase() {
        connection().roll_back();  // what a test that failed left open
        remove_journal(connection());
    }

    [[nodiscard]] TestDatabase& database() { return *database_; }
    [[nodiscard]] NativeConnection& connection() { return database_->connection(); }

private:
    std::unique_ptr<TestDatabase> database_;
};

}  // namespace vantlo::test
