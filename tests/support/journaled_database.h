#pragma once

#include "tests/support/test_database.h"

namespace vantlo::test {

/// Runs a script of schema/ in one transaction. MariaDB's scripts lock what they need themselves.
inline void run_as_a_whole(NativeConnection& connection, const std::string& script) {
    if (connection.dialect().name == "mariadb") return connection.run_script(script);
    connection.begin();
    connection.run_script(script);
    connection.commit();
}

inline void begin_journal(NativeConnection& connection) {
    run_as_a_whole(connection, schema_of(std::string(connection.dialect().name) + "-journal"));
}

inline void end_journal(NativeConnection& connection) {
    run_as_a_whole(connection, schema_of(std::string(connection.dialect().name) + "-journal-off"));
}

inline void remove_journal(NativeConnection& connection) {
    end_journal(connection);
    run_as_a_whole(connection, schema_of(std::string(connection.dialect().name) + "-journal-remove"));
}

/// The database of this run (make_test_database) with the journal of movements, which is gone with it.
class JournaledDatabase {
public:
    JournaledDatabase() { begin_journal(connection()); }
    JournaledDatabase(const JournaledDatabase&) = delete;
    JournaledDatabase& operator=(const JournaledDatabase&) = delete;
    ~JournaledDatabase() {
        connection().roll_back();  // what a test that failed left open
        remove_journal(connection());
    }

    [[nodiscard]] TestDatabase& database() { return *database_; }
    [[nodiscard]] NativeConnection& connection() { return database_->connection(); }

private:
    std::unique_ptr<TestDatabase> database_ = make_test_database();
};

}  // namespace vantlo::test
