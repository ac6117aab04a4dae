#include <doctest/doctest.h>

#include <algorithm>

#include "ado/native/open_connection.h"
#include "bookkeeping/journal.h"
#include "tests/support/shell.h"
#include "tests/support/terminal.h"
#include "tests/support/test_database.h"

// vantlo journal, adopt and leave, as a user calls them.

namespace vantlo::test {
namespace {

constexpr const char* stock_in =
    R"({"bills": [{"kind": "stock-in", "id": "R1", "date": "2024-03-05", "lines": [)"
    R"({"goods": "G1", "quantity": 2, "receiver": "W1"}, {"goods": "G2", "quantity": 3, "receiver": "W1"}]}]})";

Owned<NativeConnection> open(const Shell& shell) { return open_connection("sqlite:" + shell.path("vantlo.db")); }

/// The rows of a select, their fields with blanks between.
std::vector<std::string> rows_of(const Shell& shell, TextView select) {
    std::vector<std::string> rows;
    for (const std::vector<Variant>& row : open(shell)->run(select).rows) {
        std::string& text = rows.emplace_back();
        for (const Variant& value : row) text += (value.is<Null>() ? "null" : to_utf8(to_text(value))) + " ";
    }
    return rows;
}

std::vector<std::string> catalog_of(const Shell& shell) {
    return rows_of(shell, u"select type, name, tbl_name, sql from sqlite_schema order by name");
}

/// A database that a host has used for years: no table of vantlo's own, and a ledger with rows.
struct HostsShop {
    HostsShop() {
        const auto database = open(shell);
        database->run_script(schema_of("sqlite"));
        database->run_script(
            "drop table SavedBill; drop table BillHistory; drop table RepairJournal; drop table PostingJournal;"
            "drop table ShopDescription; drop table StockMinimum;"
            "insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values"
            "('W1','G1','','',0,10,4,6),('W2','G1','','',0,1.5,null,1.5)");
    }

    Shell shell;
};

TEST_CASE("init begins the journal, and a saved bill's movements name it with line and member") {
    const Shell shell;
    CHECK(shell.vantlo("init").exit_code == 0);
    shell.file("bill.json", stock_in);
    CHECK(shell.vantlo("save bill.json").exit_code == 0);
    CHECK(shell.vantlo("delete stock-in R1").exit_code == 0);
    const TextView movements =
        u"select Action, GId, CurrentChange, Program, BillKind, BillId, ItemNo, Member from StockMovement order by "
        u"MovementNo";
    CHECK(rows_of(shell, movements) ==
          std::vector<std::string>{"insert G1 2 vantlo stock-in R1 1 In_AddInventory ",
                                   "insert G2 3 vantlo stock-in R1 2 In_AddInventory ",
                                   "update G1 -2 vantlo stock-in R1 null In_ReduceInventory ",
                                   "update G2 -3 vantlo stock-in R1 null In_ReduceInventory "});
    CHECK(rows_of(shell, u"select * from CurrentPosting").empty());
    const Finished status = shell.vantlo("journal status");
    CHECK(status.exit_code == 0);
    CHECK(status.output == "The journal is on; it has 4 movements.\nThe ledger is the sum of its movements.\n");
    CHECK(shell.vantlo("--lang zh journal status").has("流水已开启"));
}

TEST_CASE("init makes no journal where it is told not to, or where the ledger has rows already") {
    const Shell shell;
    CHECK(shell.vantlo("init --no-journal").exit_code == 0);
    CHECK(shell.vantlo("journal status").has("There is no journal"));
    const HostsShop hosts;
    const Finished init = hosts.shell.vantlo("init");
    CHECK(init.exit_code == 0);
    CHECK(init.has("vantlo adopt"));
    CHECK(hosts.shell.vantlo("journal status").has("There is no journal"));
}

TEST_CASE("journal status tells what went past the triggers, and exits with 3") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("bill.json", stock_in);
    shell.vantlo("save bill.json");
    open(shell)->run_script("drop trigger StockMovementOfUpdate; update Inventory set InQty = 9 where GId = 'G1'");
    const Finished status = shell.vantlo("journal status");
    CHECK(status.exit_code == 3);
    CHECK(status.has("The journal is incomplete"));
    CHECK_MESSAGE(
        status.has(
            "  W1 G1, status 0: ledger received 9 issued 0 on hand 2, movements received 2 issued 0 on hand 2\n"),
        status.output);
    CHECK(shell.vantlo("journal on").exit_code == 0);
    CHECK(rows_of(shell, u"select GId, InChange from StockMovement where Action = 'gap'") ==
          std::vector<std::string>{"G1 7 "});
}

TEST_CASE("journal off keeps the movements, and init leaves it off") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("bill.json", stock_in);
    shell.vantlo("save bill.json");
    CHECK(shell.vantlo("journal off").output == "The journal is off; it has 2 movements.\n");
    CHECK(shell.vantlo("init").exit_code == 0);
    CHECK(shell.vantlo("delete stock-in R1").exit_code == 0);
    CHECK(shell.vantlo("journal status").output == "The journal is off; it has 2 movements.\n");
    CHECK(shell.vantlo("journal on").output ==
          "The journal is on; it has 4 movements.\nThe ledger is the sum of its movements.\n");
    CHECK(shell.vantlo("journal sideways").exit_code == 2);
}

TEST_CASE("A journal whose table is gone is told, and journal on begins anew") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("bill.json", stock_in);
    shell.vantlo("save bill.json");
    open(shell)->run(u"drop table StockMovement");
    const Finished status = shell.vantlo("journal status");
    CHECK(status.exit_code == 3);
    CHECK_MESSAGE(status.has("every change of the ledger fails"), status.output);
    CHECK(shell.vantlo("init").has("every change of the ledger fails"));
    CHECK(shell.vantlo("verify").has("every change of the ledger fails"));
    CHECK(shell.vantlo("delete stock-in R1").exit_code != 0);
    CHECK(shell.vantlo("journal on").output ==
          "The journal is on; it has 2 movements.\nThe ledger is the sum of its movements.\n");
    CHECK(shell.vantlo("delete stock-in R1").exit_code == 0);
    open(shell)->run(u"drop table StockMovement");
    CHECK(shell.vantlo("journal off").output == "There is no journal; vantlo journal on begins one.\n");
}

TEST_CASE_FIXTURE(HostsShop, "adopt shows what it would make, and changes nothing unless the user agrees") {
    const std::vector<std::string> before = catalog_of(shell);
    const Finished alone = shell.vantlo("adopt </dev/null");
    CHECK(alone.exit_code == 2);
    CHECK_MESSAGE(
        alone.has("To be made: table SavedBill, table BillHistory, table RepairJournal, table PostingJournal, "
                  "table ShopDescription, table StockMinimum, the journal of movements"),
        alone.output);
    CHECK(alone.has("--yes"));
    CHECK(shell.vantlo("adopt --dry-run").has("create trigger if not exists StockMovementOfInsert"));
    Terminal terminal(shell.in_folder(shell.program() + " adopt"));
    CHECK(terminal.wait_for("Go on? [y/N] "));
    terminal.type("n\n");
    CHECK(terminal.finish() == 7);
    CHECK(catalog_of(shell) == before);
}

TEST_CASE_FIXTURE(HostsShop,
                  "adopt writes an opening entry for each ledger row and leaves the host's tables as they are") {
    const std::vector<std::string> before = catalog_of(shell);
    const std::vector<std::string> ledger = rows_of(shell, u"select * from Inventory");
    Terminal terminal(shell.in_folder(shell.program() + " adopt"));
    CHECK(terminal.wait_for("Go on? [y/N] "));
    terminal.type("y\n");
    CHECK(terminal.finish() == 0);
    CHECK(rows_of(shell, u"select Action, WID, InChange, OutChange, CurrentChange, OutAfter from StockMovement") ==
          std::vector<std::string>{"opening W1 10 4 6 4 ", "opening W2 1.5 0 1.5 null "});
    CHECK(rows_of(shell, u"select * from Inventory") == ledger);
    std::vector<std::string> after = catalog_of(shell);
    for (const std::string& object : before) CHECK(std::ranges::find(after, object) != after.end());
    CHECK(shell.vantlo("adopt").has("Nothing is missing."));

    open(shell)->run(u"update Inventory set InQty = InQty + 1");
    CHECK(shell.vantlo("journal status").exit_code == 0);
    const Finished refused = shell.vantlo("leave </dev/null");
    CHECK(refused.exit_code == 2);
    CHECK_MESSAGE(refused.has("To be removed: the journal with 4 movements, table SavedBill"), refused.output);
    CHECK(shell.vantlo("leave --yes").exit_code == 0);
    CHECK(catalog_of(shell) == before);
    CHECK(shell.vantlo("leave --yes").has("There is nothing to remove."));
}

TEST_CASE("adopt refuses a ledger that it could not keep a journal of") {
    struct Row {
        const char* made;
        const char* told;
    };
    const Row rows[] = {
        {"create table Other(x)", "there is no table Inventory"},
        {"create table Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,CurrentQty,Remarks)",
         "Inventory has no column OutQty"},
        {"create table T(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks);"
         "create view Inventory as select * from T",
         "Inventory is a view"},
    };
    for (const Row& row : rows) {
        INFO(row.made);
        const Shell shell;
        open(shell)->run_script(row.made);
        const Finished adopted = shell.vantlo("adopt --yes");
        CHECK(adopted.exit_code == 7);
        CHECK_MESSAGE(adopted.has(row.told), adopted.output);
        CHECK(journal_state(*open(shell)) == JournalState::absent);
    }
}

TEST_CASE("adopt tells of what is worth knowing") {
    const Shell shell;
    open(shell)->run_script(
        "create table Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks);"
        "create trigger Own after delete on Inventory begin select 1; end");
    const Finished adopted = shell.vantlo("adopt --yes");
    CHECK(adopted.exit_code == 0);
    CHECK(adopted.has("hint: the ledger has no index"));
    CHECK(adopted.has("hint: there is another trigger or rule on Inventory, Own"));
    CHECK(!shell.vantlo("adopt --yes").has("StockMovementOf"));
}

}  // namespace
}  // namespace vantlo::test
