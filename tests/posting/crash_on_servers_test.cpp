#include <doctest/doctest.h>

#include "tests/support/killed_posting.h"
#include "tests/support/servers.h"

// A process that posts a bill over ODBC is killed before and after each of its statements. The server then sees a session
// that ends in the midst of things.

namespace vantlo::test {
namespace {

TEST_CASE(
    "A process killed at any statement leaves all or nothing on a server too, or exactly the earlier statements") {
    const std::map<std::string, Scenario> busiest = busiest_scenarios();
    for (const Server& server : servers()) {
        INFO(server.dialect);
        TestDatabase database(server.connection_string);
        int kills = 0;
        for (const char* const member : {"In_AddInventory", "RG_ReduceInventory_Db", "AddInventory_ZZD_ZJ"}) {
            const Scenario& scenario = busiest.at(member);
            kills += check_every_kill(scenario, [&] {
                database.fill(scenario.given);
                return KilledPosting(scenario, [&] { return Owned<NativeConnection>(server.connect().get()); });
            });
        }
        MESSAGE(kills << " kills on " << server.dialect);
    }
}

}  // namespace
}  // namespace vantlo::test
