#include <doctest/doctest.h>

#include "ado/sqlite/sqlite_connection.h"
#include "tests/support/killed_posting.h"
#include "tests/support/temporary_folder.h"

// A process that posts a bill is killed before and after each of its statements; what is in the file afterwards is all
// or nothing inside the host's transaction, and exactly the statements before the kill without one.

namespace vantlo::test {
namespace {

TEST_CASE("A process killed at any statement leaves all or nothing in a transaction, the earlier statements without") {
    int kills = 0;
    for (const auto& [member, scenario] : busiest_scenarios()) {
        const TemporaryFolder folder;
        int files = 0;
        kills += check_every_kill(scenario, [&] {
            const std::string file = folder.file(std::to_string(files++) + ".db");
            const auto connect = [file] {
                Owned<NativeConnection> connection(new SqliteConnection(file));
                // Durability against power cuts is not what is tried here.
                connection->run_script("pragma synchronous = off");
                return connection;
            };
            const auto connection = connect();
            connection->run_script(schema_of("sqlite"));
            for (const TableRow& row : scenario.given) connection->execute(insert_text(row));
            return KilledPosting(scenario, connect);
        });
    }
    MESSAGE(kills << " kills");
}

}  // namespace
}  // namespace vantlo::test
