#include <doctest/doctest.h>

#include <algorithm>
#include <thread>

#include "support/failures.h"
#include "tests/support/journaled_database.h"
#include "tests/support/servers.h"

// What only servers have: accounts without rights on the journal, and many sessions at once.

namespace vantlo::test {
namespace {

class JournaledServer {
public:
    explicit JournaledServer(const Server& server) : database_(server.connection_string) {
        begin_journal(connection());
    }
    JournaledServer(const JournaledServer&) = delete;
    JournaledServer& operator=(const JournaledServer&) = delete;
    ~JournaledServer() { remove_journal(connection()); }

    [[nodiscard]] NativeConnection& connection() { return database_.connection(); }

private:
    TestDatabase database_;
};

constexpr TextView insert_row =
    u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values('W1','G1','','',0,1,0,1)";

TEST_CASE("An account that may only post needs no rights on the journal, has none, and is named in it") {
    struct Row {
        const char* dialect;
        const char* account;
        const char* make;
        const char* end;
    };
    const Row rows[] = {
        {"postgresql", "clerk", "create role clerk login; grant select, insert, update, delete on Inventory to clerk",
         "revoke all on Inventory from clerk; drop role clerk"},
        {"mariadb", "clerk@localhost",
         "create user clerk identified by 'clerk'; grant select, insert, update, delete on Inventory to clerk",
         "drop user clerk"},
    };
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const auto* const row = std::ranges::find_if(rows, [&](const Row& r) { return r.dialect == server.dialect; });
        REQUIRE(row != std::end(rows));
        JournaledServer shop(server);
        shop.connection().run_script(row->make);
        {
            std::string as_clerk = server.connection_string.substr(0, server.connection_string.find("UID="));
            const Owned<OdbcConnection> clerk(new OdbcConnection(as_clerk + "UID=clerk;PWD=clerk"));
            clerk->run(insert_row);
            clerk->run(u"update Inventory set InQty = 2");
            clerk->run(u"delete from Inventory");
            for (const Text statement : {u"select * from StockMovement", u"delete from StockMovement",
                                         u"insert into StockMovement(Action, InChange, OutChange, CurrentChange) "
                                         u"values('update', 1, 0, 0)"}) {
                INFO(to_utf8(statement));
                CHECK_THROWS_AS(clerk->run(statement), Failure);
            }
        }
        shop.connection().run_script(row->end);
        const ResultTable users = shop.connection().run(u"select DbUser from StockMovement");
        CHECK(users.rows.size() == 3);
        for (const auto& user : users.rows) CHECK(to_utf8(to_text(user.at(0))) == row->account);
    }
}

TEST_CASE(
    "On PostgreSQL no table of a session comes before the journal, and nobody can have it write of another table") {
    for (const Server& server : servers()) {
        if (server.dialect != "postgresql") continue;
        JournaledServer shop(server);
        NativeConnection& owner = shop.connection();
        owner.run_script(
            "create role clerk login; grant select, insert on Inventory to clerk; grant create on schema public to "
            "clerk");
        {
            const std::string as_clerk = server.connection_string.substr(0, server.connection_string.find("UID="));
            const Owned<OdbcConnection> clerk(new OdbcConnection(as_clerk + "UID=clerk"));
            clerk->run(u"create temp table StockMovement (like Inventory)");
            clerk->run(insert_row);
            clerk->run(u"create table Mine (like Inventory)");
            CHECK_THROWS_AS(clerk->run(u"create trigger t after insert on Mine for each row "
                                       u"execute function write_stock_movement()"),
                            Failure);
        }
        owner.run_script("drop owned by clerk; drop role clerk");
        CHECK(to_long(only_value(owner, u"select count(*) from StockMovement")) == 1);
    }
}

TEST_CASE("The movements of many sessions add up, and of each ledger row they are in the order of their numbers") {
    constexpr int sessions = 8;
    constexpr int rounds = 60;
    for (const Server& server : servers()) {
        INFO(server.dialect);
        JournaledServer shop(server);
        for (const char16_t* const warehouse : {u"W1", u"W2", u"W3"}) {
            shop.connection().run(Text(u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
                                       u"values('") +
                                  warehouse + u"','G1','','',0,0,0,0)");
        }
        std::vector<std::thread> threads;
        for (int session = 0; session < sessions; ++session) {
            threads.emplace_back([&server, session] {
                const Owned<OdbcConnection> connection = server.connect();
                for (int round = 0; round < rounds; ++round) {
                    const Text warehouse = from_utf8("W" + std::to_string(1 + (session + round) % 3));
                    connection->run(
                        u"update Inventory set InQty = InQty + 1, CurrentQty = CurrentQty + 1 where WID = '" +
                        warehouse + u"'");
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
        CHECK(shop.connection().run(u"select * from LedgerWithoutMovement").rows.empty());
        for (const char16_t* const warehouse : {u"W1", u"W2", u"W3"}) {
            const ResultTable card =
                shop.connection().run(Text(u"select InAfter from StockMovement where GId = 'G1' and WID = '") +
                                      warehouse + u"' order by MovementNo");
            CHECK(card.rows.size() == 1 + sessions * rounds / 3);
            for (std::size_t i = 0; i < card.rows.size(); ++i) {
                CHECK(to_double(card.rows[i].at(0)) == static_cast<double>(i));
            }
        }
    }
}

}  // namespace
}  // namespace vantlo::test
