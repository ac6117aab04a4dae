#include <doctest/doctest.h>

#include "ado/native/open_connection.h"
#include "tests/support/shell.h"
#include "tests/support/terminal.h"

// vantlo repair --list and --undo, and what a repair is refused for, as a user meets it.

namespace vantlo::test {
namespace {

std::string stock_in(const std::string& id, const std::string& goods, int quantity) {
    return R"({"kind": "stock-in", "id": ")" + id + R"(", "date": "2024-03-05", "lines": [{"goods": ")" + goods +
           R"(", "quantity": )" + std::to_string(quantity) + R"(, "receiver": "W1"}]})";
}

/// A shop without a journal of movements, with 24 of G1 in W1.
struct Shop {
    Shop() {
        REQUIRE(shell.vantlo("init --no-journal").exit_code == 0);
        save(stock_in("R1", "G1", 24));
    }

    void save(const std::string& bills) const {
        shell.file("bills.json", R"({"bills": [)" + bills + "]}");
        REQUIRE(shell.vantlo("save bills.json").exit_code == 0);
    }

    /// Runs statements behind the tool's back.
    void run(const std::string& script) const { database()->run_script(script); }

    [[nodiscard]] Owned<NativeConnection> database() const {
        return open_connection("sqlite:" + shell.path("vantlo.db"));
    }
    [[nodiscard]] std::string ledger() const { return shell.vantlo("ledger --format csv").output; }
    [[nodiscard]] Finished repair() const { return shell.vantlo("repair --apply --only changed-quantity --yes"); }

    Shell shell;
};

TEST_CASE_FIXTURE(Shop, "vantlo repair --undo brings a repair back, and undoing that repairs again; --list shows all") {
    CHECK(shell.vantlo("repair --list").output == "Nothing has been repaired yet.\n");
    const std::string right = ledger();
    run("update Inventory set InQty=25,CurrentQty=25");
    const std::string spoilt = ledger();
    const Finished repaired = repair();
    CHECK(repaired.exit_code == 0);
    CHECK_MESSAGE(repaired.has("This is repair 1; vantlo repair --undo 1 brings them back."), repaired.output);
    CHECK(ledger() == right);

    const Finished unasked = shell.vantlo("repair --undo 1 </dev/null");
    CHECK(unasked.exit_code == 2);
    CHECK(unasked.has("before repair 1"));
    CHECK(ledger() == right);
    const Finished undone = shell.vantlo("repair --undo 1 --yes");
    CHECK(undone.exit_code == 0);
    CHECK_MESSAGE(
        undone.has("update Inventory set InQty=25,CurrentQty=25 where WID='W1' and GId='G1' and Model1='' and "
                   "Model2='' and Status=0;\n"),
        undone.output);
    CHECK(undone.has("Repair 1 is undone, and its rows are as they were; this is repair 2 itself.\n"));
    CHECK(ledger() == spoilt);
    CHECK(shell.vantlo("verify").exit_code == 3);

    const Finished twice = shell.vantlo("repair --undo 1 --yes");
    CHECK(twice.exit_code == 7);
    CHECK(twice.has("repair 1 was undone already, by repair 2\n"));
    CHECK(shell.vantlo("repair --undo 2 --yes").exit_code == 0);
    CHECK(ledger() == right);
    CHECK(shell.vantlo("repair --undo 9 --yes").has("there is no repair 9"));
    CHECK(shell.vantlo("repair --undo 1 --apply").exit_code == 2);
    CHECK(shell.vantlo("repair --undo x").exit_code == 2);

    const Finished list = shell.vantlo("repair --list");
    CHECK(list.exit_code == 0);
    CHECK_MESSAGE(list.has("A quantity is not what the bills say (undone by 2)\n"), list.output);
    CHECK(list.has("repair 1 undone (undone by 3)\n"));
    CHECK(list.has("repair 2 undone\n"));
    CHECK(shell.vantlo("--lang zh repair --list").has("已被 2 号撤销"));
}

TEST_CASE_FIXTURE(Shop, "vantlo repair --undo asks on a terminal, and refuses rows that have moved since") {
    run("update Inventory set InQty=25,CurrentQty=25");
    CHECK(repair().exit_code == 0);
    const auto answered = [&](const std::string& answer, const std::function<void()>& meanwhile) {
        Terminal terminal(shell.in_folder(Shell::program() + " repair --undo 1"));
        REQUIRE(terminal.wait_for("Go on? [y/N] "));
        meanwhile();
        terminal.type(answer + "\n");
        const int exit_code = terminal.finish();
        CAPTURE(terminal.shown());
        return exit_code;
    };
    const std::string before = ledger();
    CHECK(answered("n", [] {}) == 7);
    CHECK(ledger() == before);
    CHECK(answered("y", [&] { save(stock_in("R2", "G1", 1)); }) == 7);
    const std::string moved = ledger();
    CHECK(moved != before);
    const Finished refused = shell.vantlo("repair --undo 1 --yes");
    CHECK(refused.exit_code == 7);
    CHECK_MESSAGE(refused.has("rows of repair 1 have moved since; nothing was changed:\n"
                              "  WID='W1' and GId='G1' and Model1='' and Model2='' and Status=0\n"
                              "    left  InQty=24  CurrentQty=24\n"
                              "    now   InQty=25  CurrentQty=25\n"),
                  refused.output);
    CHECK(ledger() == moved);
}

TEST_CASE_FIXTURE(Shop, "vantlo repair --undo tells who moved a row since, where the journal of movements knows") {
    CHECK(shell.vantlo("journal on").exit_code == 0);
    run("update Inventory set InQty=25,CurrentQty=25");
    CHECK(shell.vantlo("repair --apply --yes").exit_code == 0);
    save(stock_in("R2", "G1", 1));
    const Finished refused = shell.vantlo("repair --undo 1 --yes");
    CHECK(refused.exit_code == 7);
    CHECK_MESSAGE(refused.has("    last moved: "), refused.output);
    CHECK(refused.has(" vantlo stock-in R2\n"));
}

TEST_CASE_FIXTURE(Shop, "A RepairJournal of an earlier version is told, and init adds what it lacks") {
    run("drop table RepairJournal; create table RepairJournal(EntryNo integer primary key, Cause nvarchar(100), "
        "Action nvarchar(40), WID nvarchar(40), GId nvarchar(40), Model1 nvarchar(100), Model2 nvarchar(100), Status "
        "int, "
        "BeforeInQty money, AfterInQty money, BeforeOutQty money, AfterOutQty money, BeforeCurrentQty money, "
        "AfterCurrentQty money, RepairedAt datetime default current_timestamp);"
        "insert into RepairJournal(Cause, Action, WID) values('A row has no bill', 'delete', 'W9');"
        "update Inventory set InQty=25,CurrentQty=25");
    const std::string before = ledger();
    for (const std::string command : {"--apply --only changed-quantity --yes", "--undo 1 --yes", "--list"}) {
        const Finished refused = shell.vantlo("repair " + command);
        CHECK(refused.exit_code == 7);
        CHECK_MESSAGE(refused.has("there is no column RepairJournal.RepairNo, as an earlier version made the table: "
                                  "vantlo init adds it\n"),
                      refused.output);
    }
    CHECK(ledger() == before);
    CHECK(shell.vantlo("init --no-journal").exit_code == 0);
    CHECK(repair().exit_code == 0);
    const Finished list = shell.vantlo("repair --list");
    CHECK_MESSAGE(list.has("A row has no bill (entered by an earlier version, cannot be undone)\n"), list.output);
    CHECK(shell.vantlo("repair --undo 1 --yes").exit_code == 0);
    CHECK(ledger() == before);
}

TEST_CASE("A repair is refused where the database takes the keys of its rows for one, and changes nothing") {
    const Shell shell;
    const auto database = [&] { return open_connection("sqlite:" + shell.path("vantlo.db")); };
    database()->run_script(
        "create table Inventory(WID text, GId text collate nocase, Model1 text, Model2 text, Status int, Class text, "
        "Unit text, InQty money, OutQty money, CurrentQty money, Remarks text);"
        "create index InventoryKey on Inventory(WID, GId)");
    const Finished init = shell.vantlo("init --no-journal");
    CHECK_MESSAGE(init.has("hint: GId compare without regard to case"), init.output);
    shell.file("bills.json", R"({"bills": [)" + stock_in("R1", "ga", 5) + "," + stock_in("R2", "GA", 10) + "]}");
    CHECK(shell.vantlo("save bills.json").exit_code == 0);
    const std::string before = shell.vantlo("ledger --format csv").output;
    const Finished refused = shell.vantlo("repair --apply --yes --only not-posted --only changed-quantity");
    CHECK(refused.exit_code == 1);
    CHECK_MESSAGE(refused.has("the database takes differing keys for one"), refused.output);
    CHECK(refused.has("  WID='W1' and GId='GA' and Model1='' and Model2='' and Status=0\n"));
    CHECK(shell.vantlo("ledger --format csv").output == before);
    CHECK(shell.vantlo("verify").has("hint: GId compare without regard to case"));
    CHECK(shell.vantlo("repair").has("hint: GId compare without regard to case"));
    CHECK(shell.vantlo("repair --list").output == "Nothing has been repaired yet.\n");
}

TEST_CASE_FIXTURE(Shop, "A database without RepairJournal is told how to get it") {
    run("drop table RepairJournal; update Inventory set InQty=25,CurrentQty=25");
    const std::string before = ledger();
    for (const std::string command : {"--apply --only changed-quantity --yes", "--undo 1 --yes", "--list"}) {
        const Finished refused = shell.vantlo("repair " + command);
        CHECK(refused.exit_code == 7);
        CHECK_MESSAGE(refused.has("there is no table RepairJournal: vantlo init makes it"), refused.output);
    }
    CHECK(ledger() == before);
}

TEST_CASE_FIXTURE(Shop, "vantlo repair says so where others write") {
    run("update Inventory set InQty=25,CurrentQty=25");
    const auto other = database();
    other->begin();
    other->run(u"update Inventory set InQty=26");
    const Finished refused = repair();
    CHECK(refused.exit_code == 1);
    CHECK_MESSAGE(refused.has("others were writing meanwhile; nothing was changed, run it again"), refused.output);
    other->roll_back();
    CHECK(repair().exit_code == 0);
}

}  // namespace
}  // namespace vantlo::test
