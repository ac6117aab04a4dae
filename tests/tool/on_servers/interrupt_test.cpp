#include <doctest/doctest.h>

#include <chrono>
#include <thread>

#include "ado/native/open_connection.h"
#include "tests/support/empty_shop.h"
#include "tests/support/shell.h"
#include "tests/support/terminal.h"

// Ctrl-C while a server keeps vantlo waiting.

namespace vantlo::test {
namespace {

/// Waits until a session of the server waits for a lock. Returns whether one ever did.
bool somebody_waits(const Server& server) {
    const Owned<OdbcConnection> onlooker = server.connect();
    const char16_t* const count = server.dialect == "mariadb"
                                      ? u"select count(*) as n from information_schema.processlist where state like "
                                        u"'Waiting for table%'"
                                      : u"select count(*) as n from pg_stat_activity where wait_event_type='Lock'";
    for (int look = 0; look < 600; ++look) {
        if (to_long(only_value(*onlooker, count)) > 0) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

TEST_CASE("The first Ctrl-C ends a wait for a lock on a server, whether vantlo reads or writes") {
    const Shell shell;
    shell.file("bill.json", R"({"bills": [{"kind": "stock-in", "id": "B1",
        "lines": [{"goods": "G1", "quantity": 2, "receiver": "W1"}]}]})");
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, true);
        const std::string vantlo = "VANTLO_DB='" + server.connection_string + "' " + Shell::program() + " ";
        REQUIRE(shell.run(vantlo + "save bill.json").exit_code == 0);
        for (const char* command : {"ledger", "delete stock-in B1"}) {
            INFO(std::string(command));
            const Owned<OdbcConnection> holder = server.connect();
            holder->begin();
            holder->run(server.dialect == "mariadb" ? u"lock tables Inventory write"
                                                    : u"lock table Inventory in access exclusive mode");
            Terminal terminal(shell.in_folder("VANTLO_DB='" + server.connection_string + "' exec " + Shell::program() +
                                              " " + command));
            REQUIRE(somebody_waits(server));
            terminal.type("\x03");
            CHECK(terminal.finish() == 6);  // while the lock is still held
            CHECK_MESSAGE(terminal.shown().find("vantlo: interrupted; ") != std::string::npos, terminal.shown());
            holder->roll_back();
        }
        CHECK(shell.run(vantlo + "delete stock-in B1").exit_code == 0);
    }
}

}  // namespace
}  // namespace vantlo::test
