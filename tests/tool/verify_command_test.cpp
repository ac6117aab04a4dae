#include <doctest/doctest.h>

#include "tests/audit/spoilings.h"
#include "tests/support/shell.h"
#include "tests/support/terminal.h"

// vantlo verify and vantlo repair, as a user runs them.

namespace vantlo::test {
namespace {

/// A shop whose ledger was changed by something else than the tool.
void spoil(const Shell& shell, TextView statement) {
    open_connection("sqlite:" + shell.path("vantlo.db"))->run(statement);
}

void make_shop(const Shell& shell, const std::string& init = "init --no-journal") {
    CHECK(shell.vantlo(init).exit_code == 0);
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
    CHECK(clean.output == "The ledger agrees with the bills: 2 bills, 1 ledger row.\n");
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
          "     touched by stock-in R1, stock-out C1\n"
          "\n"
          "There is no journal of movements: who changed a row and when, and whether a bill was edited or deleted "
          "after it "
          "was\n"
          "posted, cannot be known (see vantlo journal on, vantlo adopt).\n");
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
    CHECK(shell.vantlo("repair --apply --only changed-quantity --yes 2>/dev/null").output == printed.output);
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
    const Finished refused = shell.vantlo("repair --apply --only changed-quantity --yes");
    CHECK(refused.exit_code == 1);
    CHECK(refused.has("all was rolled back"));
    const auto database = open_connection("sqlite:" + shell.path("vantlo.db"));
    CHECK(database->run(u"select * from RepairJournal").rows.empty());
    CHECK(database->run(u"select InQty from Inventory").rows[0][0] == Variant(Currency::from_whole(25)));

    database->run(u"drop trigger Meddling");
    for (const TextView statement : spoilings().back().statements) database->run(statement);
    CHECK(shell.vantlo("repair --apply --only changed-quantity --goods G1 --yes").exit_code == 3);
    const Finished verified = shell.vantlo("verify");
    CHECK(verified.exit_code == 3);
    CHECK(verified.has("1. A bill cannot be posted (1)\n   stock-in HUGE\n"));
}

/// The ledger's rows, as a test compares them.
std::string ledger_of(const Shell& shell) { return shell.vantlo("ledger --format csv").output; }

TEST_CASE("vantlo repair --apply runs nothing unless a cause is named, and says which there are") {
    const Shell shell;
    make_shop(shell);
    const std::string before = ledger_of(shell);
    spoil(shell, u"update GoodsUnit set UnitConverter=99");  // the ledger is right, the unit is what was changed
    const Finished refused = shell.vantlo("repair --apply --yes");
    CHECK(refused.exit_code == 7);
    CHECK(refused.has("there is: changed-quantity\n"));
    CHECK(ledger_of(shell) == before);
    const Finished other = shell.vantlo("repair --apply --yes --only posted-twice");
    CHECK(other.exit_code == 3);
    CHECK(other.has("Not chosen: changed-quantity\n"));
    CHECK(ledger_of(shell) == before);
    CHECK(shell.vantlo("repair --only no-such-cause").exit_code == 2);
}

TEST_CASE("vantlo repair leaves rows without a bill alone unless their goods are named") {
    const Shell shell;
    make_shop(shell);
    spoil(shell,
          u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
          u"values('W1','OPEN','','',0,8,0,8)");
    const std::string before = ledger_of(shell);
    const Finished left = shell.vantlo("repair --apply --yes --only extra-row");
    CHECK(left.exit_code == 3);
    CHECK(left.has("  extra-row  WID='W1' and GId='OPEN' and Model1='' and Model2='' and Status=0\n"));
    CHECK(ledger_of(shell) == before);
    CHECK(shell.vantlo("repair").has("There is nothing to repair.\n"));
    CHECK(shell.vantlo("repair --apply --yes --only extra-row --goods OPEN --warehouse W2").exit_code == 3);
    CHECK(ledger_of(shell) == before);
    CHECK(shell.vantlo("repair --apply --yes --only extra-row --goods OPEN").exit_code == 0);
    CHECK(ledger_of(shell).find("OPEN") == std::string::npos);
}

TEST_CASE("vantlo repair judges no row while a bill is not known in full") {
    const TextView spoilings_of_bills[] = {
        u"update StockBillItems set Actualqty='two' where BillId='R1'",
        u"delete from StockBill where Id='R1'",
        u"update StockBill set Kind='stock-inn' where Id='R1'",
    };
    for (const TextView statement : spoilings_of_bills) {
        const Shell shell;
        make_shop(shell);
        const std::string before = ledger_of(shell);
        spoil(shell, statement);
        INFO(to_utf8(statement));
        for (const std::string& cause : cause_names()) {
            shell.vantlo("repair --apply --yes --only " + cause);
            CHECK(ledger_of(shell) == before);
        }
        CHECK(shell.vantlo("repair").has("Left alone, since the bills do not tell what is right"));
    }
}

TEST_CASE(
    "vantlo verify tells by the journal what was changed outside any bill, which vantlo repair undoes by itself") {
    const Shell shell;
    make_shop(shell, "init");
    const std::string before = ledger_of(shell);
    spoil(shell, u"update Inventory set InQty=25,CurrentQty=20");
    const Finished verified = shell.vantlo("verify");
    CHECK(verified.exit_code == 3);
    CHECK(verified.has("1. The ledger was changed outside any bill (1)\n"));
    CHECK(verified.has(" by somebody unknown (update): Received 24 -> 25, On hand 19 -> 20\n"));
    CHECK(!verified.has("There is no journal"));
    CHECK(shell.vantlo("repair --apply --yes").exit_code == 0);
    CHECK(ledger_of(shell) == before);
    CHECK(shell.vantlo("verify").output == "The ledger agrees with the bills: 2 bills, 1 ledger row.\n");
}

TEST_CASE("vantlo verify tells which line of a bill was edited, and which factor was changed") {
    const Shell shell;
    make_shop(shell, "init");
    spoil(shell, u"update StockBillItems set Actualqty=4 where BillId='C1'");
    CHECK(shell.vantlo("verify").has(
        "1. A bill was edited after it was posted (1)\n"
        "   stock-out C1\n"
        "     line 1: it moved received 0  issued 5  on hand -5; now it says received 0  issued 4  on hand -4\n"));
    const std::string before = ledger_of(shell);
    CHECK(shell.vantlo("repair --apply --yes --only edited-bill").exit_code == 3);
    CHECK(ledger_of(shell) == before);
    CHECK(shell.vantlo("repair --apply --yes --only edited-bill --goods G1").exit_code == 0);

    spoil(shell, u"update GoodsUnit set UnitConverter=99");
    CHECK(
        shell.vantlo("verify").has("1. The factor of a unit was changed after bills were posted (1)\n"
                                   "   goods G1, unit 箱: 12 when posted, 99 now; bills concerned 1: stock-in R1\n"));
}

TEST_CASE("vantlo verify tells that a bill was taken back by another factor than it was posted by") {
    const Shell shell;
    make_shop(shell, "init");
    spoil(shell, u"update GoodsUnit set UnitConverter=15");
    CHECK(shell.vantlo("delete --force stock-in R1").exit_code == 0);
    shell.file("later.json", R"({"bills": [{"kind": "stock-in", "id": "R2", "lines": [
        {"goods": "G1", "unit": "箱", "quantity": 1, "receiver": "W01"}]}]})");
    CHECK(shell.vantlo("save later.json").exit_code == 0);
    const Finished verified = shell.vantlo("verify");
    CHECK(verified.exit_code == 3);
    CHECK_MESSAGE(
        verified.has("1. The factor of a unit was changed after bills were posted (1)\n"
                     "   goods G1, unit 箱: 12 when posted, 15 now; bills concerned 1: stock-in R1 (taken back)\n"),
        verified.output);
    const std::string before = ledger_of(shell);
    CHECK(shell.vantlo("repair --apply --yes").exit_code == 3);
    CHECK(ledger_of(shell) == before);
}

TEST_CASE("A key with a line break makes no line of its own in what vantlo verify says") {
    const Shell shell;
    make_shop(shell, "init");
    spoil(shell,
          u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
          u"values('W1','G9' || char(10) || 'The ledger agrees','','',0,-5,0,-5)");
    const Finished verified = shell.vantlo("verify");
    CHECK_MESSAGE(verified.has("GId='G9\\u000AThe ledger agrees'"), verified.output);
    CHECK(!verified.has("\nThe ledger agrees"));
}

TEST_CASE("vantlo verify compares with the bills since the opening, with --all-bills with all") {
    const Shell shell;
    make_shop(shell);
    spoil(shell,
          u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
          u"values('W1','OPEN','','',0,8,0,8)");
    CHECK(shell.vantlo("journal on").exit_code == 0);
    CHECK(shell.vantlo("verify").exit_code == 0);
    const Finished all = shell.vantlo("verify --all-bills");
    CHECK(all.exit_code == 3);
    CHECK(all.has("1. A row has no bill (1)\n   WID='W1' and GId='OPEN'"));
}

TEST_CASE("vantlo verify names the latest of equal bills that could explain a difference") {
    const Shell shell;
    CHECK(shell.vantlo("init --no-journal").exit_code == 0);
    std::string bills;
    for (const char* const id : {"A1", "A2", "A3", "A4", "A5"}) {
        bills += (bills.empty() ? "" : ",") + std::string(R"({"kind": "stock-in", "id": ")") + id +
                 R"(", "date": "2024-03-05", "lines": [{"goods": "G1", "quantity": 2, "receiver": "W1"}]})";
    }
    shell.file("bills.json", "{\"bills\": [" + bills + "]}");
    CHECK(shell.vantlo("save bills.json").exit_code == 0);
    spoil(shell, u"update Inventory set InQty=8,CurrentQty=8");
    CHECK(shell.vantlo("verify").has("1. A stored bill is not posted (1)\n   stock-in A5\n"));
}

TEST_CASE("vantlo verify shows hints before it says that ledger and bills agree") {
    const Shell shell;
    CHECK(shell.vantlo("init").exit_code == 0);
    shell.file("bill.json", R"({"bills": [{"kind": "stock-out", "id": "C1", "date": "2024-03-06", "lines": [)"
                            R"({"goods": "G1", "quantity": 5, "supplier": "W1"}]}]})");
    CHECK(shell.vantlo("save bill.json").exit_code == 0);
    CHECK(shell.vantlo("verify").output ==
          "Worth a look, though no difference by itself:\n"
          "   Stock is negative, as the bills say\n"
          "     WID='W1' and GId='G1' and Model1='' and Model2='' and Status=0\n"
          "\n"
          "The ledger agrees with the bills: 1 bill, 1 ledger row.\n");
}

TEST_CASE("vantlo repair asks on a terminal, and needs --yes where nobody can be asked") {
    const Shell shell;
    make_shop(shell);
    spoil(shell, u"update Inventory set InQty=25,CurrentQty=20");
    const std::string before = ledger_of(shell);
    const std::string repair = "repair --apply --only changed-quantity";
    const Finished unasked = shell.vantlo(repair + " </dev/null");
    CHECK(unasked.exit_code == 2);
    CHECK(unasked.has("This changes the rows of 1 key, as shown above.\nvantlo: nobody can be asked: say --yes\n"));
    CHECK(ledger_of(shell) == before);
    const auto answered = [&](const std::string& answer, const std::function<void()>& meanwhile) {
        Terminal terminal(shell.in_folder(Shell::program() + " " + repair));
        REQUIRE(terminal.wait_for("Go on? [y/N] "));
        meanwhile();
        terminal.type(answer + "\n");
        return terminal.finish();
    };
    CHECK(answered("n", [] {}) == 7);
    CHECK(ledger_of(shell) == before);
    CHECK(answered("y", [&] { spoil(shell, u"update Inventory set InQty=26,CurrentQty=21"); }) == 1);
    CHECK(ledger_of(shell).find("26") != std::string::npos);
    CHECK(answered("y", [] {}) == 0);
    CHECK(shell.vantlo("verify").exit_code == 0);
}

TEST_CASE("vantlo verify ends with 3 where the history cannot be read, and vantlo repair judges no row then") {
    const Shell shell;
    make_shop(shell);
    CHECK(shell.vantlo("delete stock-out C1").exit_code == 0);
    spoil(shell, u"update BillHistory set Content='{' where Action='take back'");
    const Finished verified = shell.vantlo("verify");
    CHECK(verified.exit_code == 3);
    CHECK_MESSAGE(verified.has("1. The history cannot be read (1)\n     stock-out C1 (BillHistory 3): "),
                  verified.output);
    CHECK(shell.vantlo("--lang zh verify").has("1. 历史记录无法读取 (1)\n"));

    spoil(shell, u"update Inventory set InQty=25,CurrentQty=25");
    const std::string before = ledger_of(shell);
    for (const std::string& cause : cause_names()) {
        CHECK(shell.vantlo("repair --apply --yes --only " + cause).exit_code == 3);
        CHECK(ledger_of(shell) == before);
    }
    CHECK(shell.vantlo("repair").has("Left alone, since the bills do not tell what is right"));
}

}  // namespace
}  // namespace vantlo::test
