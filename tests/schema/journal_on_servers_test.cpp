#include <doctest/doctest.h>

#include <algorithm>
#include <thread>

#include "ado/native/open_connection.h"
#include "audit/adoption.h"
#include "bookkeeping/journal.h"
#include "support/failures.h"
#include "tests/support/empty_shop.h"
#include "tests/support/journaled_database.h"
#include "tests/support/sample_shop.h"
#include "tests/support/servers.h"

// What only servers have: accounts without rights on the journal, and many sessions at once.

namespace vantlo::test {
namespace {

std::unique_ptr<TestDatabase> database_of(const Server& server) {
    return std::make_unique<TestDatabase>(server.connection_string);
}

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
        JournaledDatabase shop(database_of(server));
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
        JournaledDatabase shop(database_of(server));
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
        JournaledDatabase shop(database_of(server));
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

TEST_CASE("The sample shop's movements name their bills and add up, also after bills are taken back") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, true);
        const auto database = server.connect();
        switch_journal_on(*database);
        {
            Bookkeeping bookkeeping([&] { return open_connection(server.connection_string); });
            save_sample_shop(bookkeeping);
            reverse_sample_bills(bookkeeping);
        }
        const JournalStatus status = journal_status(*database);
        CHECK(status.state == JournalState::on);
        CHECK(status.movements > 500);
        CHECK(status.unexplained.empty());
        CHECK(database
                  ->run(u"select * from StockMovement where BillId is null or BillKind is null or Program <> 'vantlo'")
                  .rows.empty());
        CHECK(to_long(only_value(*database, u"select count(distinct BillId) from StockMovement")) > 50);
        switch_journal_off(*database);
        CHECK(journal_state(*database) == JournalState::off);
        remove_journal(*database);
        CHECK(journal_state(*database) == JournalState::absent);
    }
}

TEST_CASE("On servers the types of a ledger are looked over before it is adopted") {
    struct Row {
        const char* dialect;
        const char* change;
        AdoptionFinding finding;
        const char* subject;
    };
    const Row rows[] = {
        {"postgresql", "alter table Inventory alter column InQty type numeric(30,6)", AdoptionFinding::quantity_type,
         "inqty numeric"},
        {"postgresql", "alter table Inventory alter column InQty type varchar(40)", AdoptionFinding::quantity_type,
         "inqty character varying"},
        {"postgresql", "alter table Inventory alter column GId type varchar(300)", AdoptionFinding::key_type,
         "gid character varying"},
        {"mariadb", "alter table Inventory modify Status varchar(40)", AdoptionFinding::key_type, "Status varchar"},
    };
    for (const Server& server : servers()) {
        const auto database = server.connect();
        for (const Row& row : rows) {
            if (row.dialect != server.dialect) continue;
            INFO(row.change);
            const EmptyShop shop(server, false);
            CHECK(look_before_adopting(*database).empty());
            database->run(from_utf8(row.change));
            const std::vector<AdoptionNote> notes = look_before_adopting(*database);
            database->run(u"drop table Inventory");
            database->run_script(schema_of(server.dialect));
            REQUIRE(notes.size() == 1);
            CHECK(notes[0].finding == row.finding);
            CHECK(notes[0].subject == row.subject);
        }
    }
}

}  // namespace
}  // namespace vantlo::test
