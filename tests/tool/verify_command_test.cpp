#include <doctest/doctest.h>

#include "tests/audit/spoilings.h"
#include "tests/support/shell.h"

// vantlo verify and vantlo repair, as a user runs them.

namespace vantlo::test {
namespace {

/// A shop whose ledger was spoilt behind the tool's back.
void spoil(const Shell& shell, TextView statement) {
    open_connection("sqlite:" + shell.path("vantlo.db"))->run(statement);
}

void make_shop(const Shell& shell) {
    CHECK(shell.vantlo("init").exit_code == 0);
    shell.file("bills.json", R"({"units": [{"goods": "G1", "unit": "箱", "factor": 12}], "bills": [)"
                             R"({"kind": "stock-in", "id": "R1", "date": "2024-03-05", "lines": [)"
                             R"({"goods": "G1", "unit": "箱", "quantity": 2, "receiver": "W1"}]},)"
                             R"({"kind": "stock-out", "id": "C1", "date": "2024-03-06", "lines": [)"
                             R"({"goods": "G1", "quantity": 5, "supplier": "W1"}]}]})");
    CHECK(shell.vantlo("save bills.json").exit_code == 0);
}

TEST_CASE("vantlo verify ends with 0 if ledger and bills agree, and with 3 if they differ") {
    const Shell shell;
    make_shop(shell);
    const Finished clean = shell.vantlo("verify");
    CHECK(clean.exit_code == 0);
    CHECK(clean.output == "The ledger agrees with the bills: 2 bills, 1 ledger rows.\n");
    CHECK(shell.vantlo("--lang zh verify").output == "台账与单据相符：单据 2 张，台账 1 行。\n");

    spoil(shell, u"update Inventory set InQty=25,CurrentQty=20");
    const Finished differs = shell.vantlo("verify 2>/dev/null");
    CHECK(differs.exit_code == 3);
    CHECK(differs.output ==
          "The ledger differs from the bills: causes 1, cases 1, ledger rows 1.\n"
          "\n"
          "1. A quantity is not what the bills say (1)\n"
          "   WID='W1' and GId='G1' and Model1='' and Model2='' and Status=0\n"
          "     ledger  received 25  issued 5  on hand 20\n"
          "     bills   received 24  issued 5  on hand 19\n"
          "     touched by stock-in R1, stock-out C1\n");
    CHECK(shell.vantlo("--lang zh verify").has("1. 数量与单据不符 (1)\n"));
}

TEST_CASE("vantlo repair prints what would set the ledger right, and with --apply does it") {
    const Shell shell;
    make_shop(shell);
    CHECK(shell.vantlo("repair").output == "There is nothing to repair.\n");
    spoil(shell, u"update Inventory set InQty=25,CurrentQty=20");
    const Finished printed = shell.vantlo("repair 2>/dev/null");
    CHECK(printed.exit_code == 0);
    CHECK(printed.output ==
          "begin;\n"
          "-- A quantity is not what the bills say\n"
          "update Inventory set InQty=24,OutQty=5,CurrentQty=19"
          " where WID='W1' and GId='G1' and Model1='' and Model2='' and Status=0;\n"
          "commit;\n");
    CHECK(shell.vantlo("verify").exit_code == 3);
    CHECK(shell.vantlo("repair --apply 2>/dev/null").output == printed.output);
    CHECK(shell.vantlo("verify").exit_code == 0);
    const auto database = open_connection("sqlite:" + shell.path("vantlo.db"));
    const ResultTable journal = database->run(
        u"select Action,GId,BeforeInQty,AfterInQty,BeforeOutQty,AfterOutQty,BeforeCurrentQty,AfterCurrentQty "
        u"from RepairJournal");
    REQUIRE(journal.rows.size() == 1);
    const auto whole = [](std::int32_t value) { return Variant(Currency::from_whole(value)); };
    CHECK(journal.rows[0] ==
          std::vector<Variant>{u"update", u"G1", whole(25), whole(24), whole(5), whole(5), whole(20), whole(19)});
}

TEST_CASE("vantlo repair leaves all as it was if the ledger would still differ, and what has no rows it cannot mend") {
    const Shell shell;
    make_shop(shell);
    spoil(shell, u"update Inventory set InQty=25,CurrentQty=20");
    spoil(shell,
          u"create trigger Meddling after update on Inventory begin "
          u"update Inventory set OutQty=new.OutQty+1 where rowid=new.rowid; end");
    const Finished refused = shell.vantlo("repair --apply");
    CHECK(refused.exit_code == 1);
    CHECK(refused.has("all was rolled back"));
    const auto database = open_connection("sqlite:" + shell.path("vantlo.db"));
    CHECK(database->run(u"select * from RepairJournal").rows.empty());
    CHECK(database->run(u"select InQty from Inventory").rows[0][0] == Variant(Currency::from_whole(25)));

    database->run(u"drop trigger Meddling");
    for (const TextView statement : spoilings().back().statements) database->run(statement);
    CHECK(shell.vantlo("repair --apply").exit_code == 3);
    const Finished verified = shell.vantlo("verify");
    CHECK(verified.exit_code == 3);
    CHECK(verified.has("1. A bill cannot be posted (1)\n   stock-in HUGE\n"));
}

}  // namespace
}  // namespace vantlo::test
