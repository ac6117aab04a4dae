#include <doctest/doctest.h>

#include "audit/ledger_conditions.h"
#include "output/conditions_report.h"
#include "support/stock_bills.h"
#include "tests/support/empty_shop.h"
#include "tests/support/sample_shop.h"

// What servers do to a ledger that is not as schema/ makes it, and what keeps postings from being spoilt by it.

namespace vantlo::test {
namespace {

using Conditions = std::vector<LedgerCondition>;

/// A change of the ledger's table on one kind of server.
struct Change {
    const char* dialect;
    const char* script;
};

/// A server's empty shop, in which the ledger is made anew at the end.
class ChangedShop {
public:
    ChangedShop(const Server& server, const char* script)
        : shop_(server, false), dialect_(server.dialect), connection(open_connection(server.connection_string)) {
        connection->run_script(script);
    }
    ChangedShop(const ChangedShop&) = delete;
    ChangedShop& operator=(const ChangedShop&) = delete;
    ~ChangedShop() {
        connection->roll_back();
        connection->run(u"drop table Inventory");
        connection->run_script(schema_of(dialect_));
    }

private:
    EmptyShop shop_;
    std::string dialect_;

public:
    const Owned<NativeConnection> connection;
};

TEST_CASE("On servers a ledger that is not as the schema makes it is told") {
    struct Row {
        Change change;
        Conditions conditions;
    };
    const Row rows[] = {
        {{"postgresql", "drop index InventoryKey"}, {{Condition::no_key_index, ""}}},
        {{"postgresql",
          "create collation if not exists no_case (provider = icu, locale = 'und-u-ks-level2', deterministic = false);"
          "alter table Inventory alter column GId type varchar(40) collate no_case"},
         {{Condition::key_ignores_case, "GId"}, {Condition::key_ignores_width, "GId"}}},
        {{"postgresql", "alter table Inventory alter column WID type char(40)"},
         {{Condition::key_ignores_blanks, "WID"}}},
        {{"postgresql", "create rule Own as on insert to Inventory do instead nothing"},
         {{Condition::other_trigger, "own"}}},
        {{"postgresql", "alter table RepairJournal rename column Cause to Caused"},
         {{Condition::older_table, "RepairJournal.Cause"}}},
        {{"mariadb", "alter table Inventory drop index InventoryKey"}, {{Condition::no_key_index, ""}}},
        {{"mariadb", "alter table Inventory drop index InventoryKey, add index K (WID, GId), engine = MyISAM"},
         {{Condition::no_rollback, "Inventory (MyISAM)"}}},
        {{"mariadb", "alter table StockBillItems engine = Aria"}, {{Condition::no_rollback, "StockBillItems (Aria)"}}},
        {{"mariadb", "alter table Inventory modify GId varchar(40) collate utf8mb4_bin"},
         {{Condition::key_ignores_blanks, "GId"}}},
        {{"mariadb", "alter table Inventory modify GId varchar(40) collate utf8mb4_general_nopad_ci"},
         {{Condition::key_ignores_case, "GId"}}},
        {{"mariadb", "alter table Inventory drop column Remarks"}, {{Condition::column_missing, "Remarks"}}},
        {{"mariadb", "create trigger Own after delete on Inventory for each row set @x = 1"},
         {{Condition::other_trigger, "Own"}}},
    };
    for (const Server& server : servers()) {
        for (const Row& row : rows) {
            if (row.change.dialect != server.dialect) continue;
            INFO(std::string(row.change.script));
            {
                const EmptyShop untouched(server, false);
                CHECK(report_of(ledger_conditions(*server.connect()), Language::english).empty());
            }
            const ChangedShop shop(server, row.change.script);
            CHECK(report_of(ledger_conditions(*shop.connection), Language::english) ==
                  report_of(row.conditions, Language::english));
            shop.connection->run_script(server.dialect == "mariadb"
                                            ? "alter table StockBillItems engine = InnoDB"
                                            : "drop table RepairJournal; drop collation if exists no_case cascade");
        }
    }
}

/// What a bookkeeping with a guard says of a bill of 4 G1 from W1 to W2 that it does not save; empty if it saves it.
std::string refusal(NativeConnection& database, bool is_forced = false, int quantity = 4) {
    const Owned<NativeConnection> connection(&database);
    Bookkeeping bookkeeping([&] { return connection; }, {}, Language::english, GuardRules{.is_forced = is_forced});
    try {
        Bill bill = stock_bill(u"B1", u"G1", quantity, u"W2", u"W1");
        bill.lines.front().set(u"Qty", 4.0F);
        bookkeeping.save(bill);
        return {};
    } catch (const TaskError& error) {
        CHECK(error.reason() == Reason::refused);
        return error.what();
    }
}

std::size_t rows_in(NativeConnection& database, TextView table) {
    return database.run(u"select * from " + Text(table)).rows.size();
}

TEST_CASE("On servers the driver's count of changed rows is known") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, false);
        const auto database = server.connect();
        CHECK(database->run(u"insert into Inventory(WID, InQty) values('W1', 1)").changed_rows == 1);
        CHECK(database->run(u"insert into Inventory(WID, InQty) values('W1', 1)").changed_rows == 1);
        const bool counts_found_rows = server.dialect != "mariadb";
        CHECK(database->run(u"update Inventory set InQty = InQty + 0").changed_rows == (counts_found_rows ? 2 : 0));
        CHECK(database->run(u"update Inventory set InQty = InQty + 1").changed_rows == 2);
        CHECK(database->run(u"update Inventory set InQty = 2 where WID = 'W9'").changed_rows == 0);
        CHECK(database->run(u"delete from Inventory").changed_rows == 2);
        CHECK(!database->run(u"select * from Inventory").changed_rows);
    }
}

TEST_CASE("Nothing is posted on servers where a write is swallowed, meets several rows, or cannot be rolled back") {
    struct Row {
        Change change;
        const char* told;
    };
    const Row rows[] = {
        {{"postgresql",
          "create or replace function swallow() returns trigger language plpgsql as $x$ begin return null; end $x$;"
          "create trigger Own before insert on Inventory for each row execute function swallow()"},
         "left the ledger as it was"},
        {{"postgresql",
          "insert into Inventory(WID, GId, Model1, Model2, Status, InQty, OutQty, CurrentQty) values"
          "('W2', 'G1', 'red', '', 0, 1, 0, 1);"
          "create rule Own as on update to Inventory do instead nothing"},
         "left the ledger as it was"},
        {{"postgresql",
          "insert into Inventory(WID, GId, Model1, Model2, Status, InQty, OutQty, CurrentQty) values"
          "('W1', 'G1', 'red', '', 0, 1, 0, 1), ('W1', 'G1', 'red', '', 0, 1, 0, 1)"},
         "several rows that the database takes for W1 G1 red, status 0, 2 in all"},
        {{"mariadb",
          "alter table Inventory modify GId varchar(40) collate utf8mb4_general_ci;"
          "insert into Inventory(WID, GId, Model1, Model2, Status, InQty, OutQty, CurrentQty) values"
          "('W2', 'g1', 'red', '', 0, 1, 0, 1), ('W2', 'G1', 'red', '', 0, 1, 0, 1)"},
         "several rows that the database takes for W2 g1 red, status 0, 2 in all"},
        {{"mariadb", "alter table Inventory drop index InventoryKey, add index K (WID, GId), engine = MyISAM"},
         "the storage engine of Inventory, MyISAM, cannot roll back"},
        {{"mariadb", "alter table StockBillItems engine = MyISAM"},
         "the storage engine of StockBillItems, MyISAM, cannot roll back"},
    };
    for (const Server& server : servers()) {
        for (const Row& row : rows) {
            if (row.change.dialect != server.dialect) continue;
            INFO(std::string(row.change.script));
            const ChangedShop shop(server, row.change.script);
            const ResultTable before = shop.connection->run(u"select * from Inventory");
            const std::string said = refusal(*shop.connection);
            CHECK_MESSAGE(said.find(row.told) != std::string::npos, said);
            CHECK(shop.connection->run(u"select * from Inventory").rows == before.rows);
            CHECK(rows_in(*shop.connection, u"StockBill") == 0);
            if (std::string(row.told).find("several") != std::string::npos) {
                CHECK(refusal(*shop.connection, true).empty());
            }
            shop.connection->run_script(server.dialect == "mariadb" ? "alter table StockBillItems engine = InnoDB"
                                                                    : "");
        }
    }
}

TEST_CASE("A line whose quantity is 0 is posted to rows that are there, on every server") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, false);
        const auto database = open_connection(server.connection_string);
        database->run(
            u"insert into Inventory(WID, GId, Model1, Model2, Status, InQty, OutQty, CurrentQty) values"
            u"('W1', 'G1', 'red', '', 0, 1, 0, 1)");
        CHECK(refusal(*database, false, 0).empty());
    }
}

TEST_CASE("A ledger that is a view, and partitions that a trigger fills, are posted to as ever") {
    const Change changes[] = {
        {"postgresql",
         "create table Part() inherits (Inventory);"
         "create or replace function divert() returns trigger language plpgsql as $x$ begin insert into Part values "
         "(new.*); "
         "return null; end $x$;"
         "create trigger Own before insert on Inventory for each row execute function divert()"},
        {"mariadb", "alter table Inventory rename to Stock; create view Inventory as select * from Stock"},
    };
    for (const Server& server : servers()) {
        for (const Change& change : changes) {
            if (change.dialect != server.dialect) continue;
            INFO(std::string(change.script));
            {
                const EmptyShop emptied(server, false);
                const auto database = open_connection(server.connection_string);
                database->run_script(change.script);
                CHECK(refusal(*database).empty());
                CHECK(rows_in(*database, u"Inventory") == 2);
                const bool is_view = server.dialect == "mariadb";
                database->run_script(is_view ? "drop view Inventory; drop table Stock"
                                             : "drop table Inventory cascade");
                database->run_script(schema_of(server.dialect));
            }
        }
    }
}

}  // namespace
}  // namespace vantlo::test
