#include <doctest/doctest.h>

#include <algorithm>
#include <set>
#include <thread>

#include "ado/native/snapshot.h"
#include "audit/repair.h"
#include "output/repair_script.h"
#include "output/verify_report.h"
#include "tests/audit/many_movements.h"
#include "tests/audit/repairs.h"
#include "tests/audit/spoilings.h"
#include "tests/support/empty_shop.h"

// verify and repair on every server of this run.

namespace vantlo::test {
namespace {

using namespace vantlo;

std::set<Cause> causes_on(NativeConnection& database) {
    std::set<Cause> causes;
    for (const Finding& finding : verify(database, Language::english).findings) causes.insert(finding.cause);
    return causes;
}

/// Repairs the ledger, undoes that, and repairs it again.
void repair(NativeConnection& database) {
    database.begin();
    check_undoing(database, repairs_of(verify(database, Language::english).findings));
    database.commit();
}

TEST_CASE("verify finds on every server what went wrong in the sample shop, and the repairs set it right") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto database = open_connection(server.connection_string);
        Bookkeeping bookkeeping([&] { return database; });
        save_sample_shop(bookkeeping);
        CHECK(causes_on(*database).empty());
        reverse_sample_bills(bookkeeping);
        CHECK(causes_on(*database).empty());

        std::set<Cause> expected;
        for (const Spoiling& spoiling : spoilings()) {
            if (spoiling.bill != nullptr) continue;
            spoil(database, spoiling);
            expected.insert(spoiling.cause);
        }
        CHECK(causes_on(*database) == expected);
        repair(*database);
        CHECK(causes_on(*database) == std::set{Cause::refused_bill});  // which no ledger row can set right
        database->run(u"delete from StockBill where Id='HUGE'");
        database->run(u"delete from StockBillItems where BillId='HUGE'");

        for (const Spoiling& spoiling : spoilings()) {
            if (spoiling.bill == nullptr) continue;
            INFO(std::string(spoiling.name));
            spoil(database, spoiling);
            CHECK(causes_on(*database) == std::set{spoiling.cause});
            repair(*database);
            CHECK(causes_on(*database).empty());
        }
        CHECK(database->run(u"select * from RepairJournal").rows.size() >= spoilings().size());
    }
}

TEST_CASE("verify takes the latest hundred of many movements without a bill, on every server") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto database = open_connection(server.connection_string);
        switch_journal_on(*database);
        check_latest_movements(database, *open_connection(server.connection_string));
        remove_journal(*database);
    }
}

TEST_CASE("A snapshot reads one state of a server's database while others write") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto reader = open_connection(server.connection_string);
        const auto writer = open_connection(server.connection_string);
        const auto rows = [&] { return to_double(only_value(*reader, u"select count(*) from Inventory")); };
        {
            const Snapshot snapshot(*reader);
            CHECK(rows() == 0);
            writer->run(
                u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
                u"values('W1','G1','','',0,1,0,1)");
            CHECK(rows() == 0);
        }
        CHECK(rows() == 1);
        reader->run(u"delete from Inventory");
        CHECK(rows() == 0);
    }
}

TEST_CASE("The history keeps a long bill that was taken back whole, on every server") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto database = open_connection(server.connection_string);
        Bookkeeping bookkeeping([&] { return database; });
        Bill bill = stock_bill(u"L'1\\", u"手机", 1, u"W1", u"W2");
        const Record line = bill.lines.front();
        bill.lines.resize(300, line);
        bookkeeping.save(bill);
        bookkeeping.reverse(*bill.kind, bill.id);
        CHECK(to_text(database->run(u"select Content from BillHistory where Content is not null").rows.at(0).at(0))
                  .size() > 30000);
        const Verification verification = verify(*database, Language::english);
        CHECK(verification.findings.empty());
        REQUIRE(verification.timeline.events.size() == 2);
        CHECK(verification.timeline.events[1].bill.lines.size() == 300);
    }
}

TEST_CASE("The tables of every server keep all that is written into them, and a column that does not is told") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto database = open_connection(server.connection_string);
        CHECK(read_columns(*database).size() > 100);
        CHECK(column_notes(read_columns(*database)).empty());

        const bool is_mariadb = server.dialect == "mariadb";
        database->run(is_mariadb ? u"alter table GoodsBill modify Actualqty decimal(12,2)"
                                 : u"alter table GoodsBill alter column Actualqty type numeric(12,2)");
        if (is_mariadb) database->run(u"alter table Inventory modify Model1 varchar(100) character set latin1");
        const std::vector<Note> notes = column_notes(read_columns(*database));
        database->run(is_mariadb ? u"alter table GoodsBill modify Actualqty float"
                                 : u"alter table GoodsBill alter column Actualqty type real");
        if (is_mariadb) {
            database->run(
                u"alter table Inventory modify Model1 varchar(100) character set utf8mb4 collate utf8mb4_nopad_bin");
        }
        REQUIRE(notes.size() == (is_mariadb ? 2 : 1));
        CHECK(std::ranges::count(notes, Remark::empty_literal, &Note::remark) == 1);
        CHECK(std::ranges::count(notes, Remark::loses_characters, &Note::remark) == (is_mariadb ? 1 : 0));
    }
}

TEST_CASE("On servers a repair that is undone brings back values of any kind, and a host's own columns") {
    struct Row {
        const char* dialect;
        const char* columns;  ///< of the host, and another type for a quantity
        const char* names;
        const char* values;
    };
    const Row rows[] = {
        {"postgresql",
         "alter table Inventory add column Own bigint generated always as identity, add column \"Shelf no\" bytea, "
         "add column Counted timestamp, alter column InQty type double precision, alter column OutQty type numeric, "
         "add column Doubled numeric generated always as (OutQty * 2) stored",
         "\"Shelf no\",Counted,InQty,OutQty", "'\\x0027ff','2024-03-05 10:11:12.123456',0.1::float8+0.2::float8,'NaN'"},
        {"mariadb",
         "alter table Inventory add column Own bigint auto_increment primary key, add column `Shelf no` varbinary(20), "
         "add column Counted datetime(6), modify InQty double, modify OutQty float, "
         "add column Doubled double as (InQty * 2) virtual",
         "`Shelf no`,Counted,InQty,OutQty", "x'0027ff','2024-03-05 10:11:12.123456',0.1e0+0.2e0,0.3"},
    };
    for (const Server& server : servers()) {
        for (const Row& row : rows) {
            if (row.dialect != server.dialect) continue;
            for (const int copies : {1, 2}) {
                INFO(server.dialect);
                CAPTURE(copies);
                const EmptyShop emptied(server, false);
                const auto database = open_connection(server.connection_string);
                database->run(from_utf8(row.columns));
                const std::string insert =
                    "insert into Inventory(WID,GId,Model1,Model2,Status,Class,CurrentQty,Remarks," +
                    std::string(row.names) + ") values('W1','G''1\\','a','',0,null,3,'备注 𠮷 \\ ''" + "'," +
                    row.values + ")";
                for (int copy = 0; copy < copies; ++copy) database->run(from_utf8(insert));
                database->begin();
                check_undoing(*database, seven_on_hand(*database, {{u"W1", u"G'1\\", u"a", u"", u"0"}}));
                database->commit();
                database->run(u"drop table Inventory");
                database->run_script(schema_of(server.dialect));
            }
        }
    }
}

TEST_CASE("On servers a repair is told as spoilt where the database takes its key for another's") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto database = open_connection(server.connection_string);
        database->run_script(
            server.dialect == "mariadb"
                ? "alter table Inventory modify GId varchar(40) collate utf8mb4_general_ci"
                : "create collation no_case (provider = icu, locale = 'und-u-ks-level2', deterministic = false);"
                  "alter table Inventory alter column GId type varchar(40) collate no_case");
        database->run(
            u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
            u"values('W1','g1','','',0,9,0,9)");
        const LedgerKey key{{u"W1", u"G1", u"", u"", u"0"}};
        CHECK(run_repairs(seven_on_hand(*database, key), *database, cause_in_journal).spoilt == std::vector{key});
        database->run(u"drop table Inventory");
        if (server.dialect != "mariadb") database->run(u"drop collation no_case");
        database->run_script(schema_of(server.dialect));
    }
}

TEST_CASE(
    "Who has locked the ledger sees what others wrote before, and nobody writes until the end of the transaction") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const TextView insert =
            u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
            u"values('W1','G1','','',0,9,0,9)";
        const auto repairer = open_connection(server.connection_string);
        const auto writer = open_connection(server.connection_string);
        writer->begin();
        writer->run(insert);
        std::thread committing([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            writer->commit();
        });
        repairer->begin();
        repairer->run(repairer->dialect().lock_ledger);
        CHECK(repairer->run(u"select * from Inventory").rows.size() == 1);
        committing.join();

        writer->run(server.dialect == "mariadb" ? u"set innodb_lock_wait_timeout = 1" : u"set lock_timeout = '1s'");
        CHECK_THROWS_AS(writer->run(insert), Failure);
        CHECK_THROWS_AS(writer->run(u"update Inventory set InQty = 1"), Failure);
        CHECK(writer->run(u"select * from Inventory").rows.size() == 1);
        repairer->commit();
        CHECK_NOTHROW(writer->run(u"update Inventory set InQty = 1"));
    }
}

}  // namespace
}  // namespace vantlo::test
