#include <doctest/doctest.h>

#include <fstream>
#include <iterator>

#include "component/member_table.h"
#include "tests/support/shell.h"
#include "tests/support/terminal.h"
#include "tests/support/transcript.h"

// What vantlo shows: the ledger in every form, bills with what they move, the members explained.

namespace vantlo::test {
namespace {

/// A shop with rows of two warehouses, classes and statuses, one with all that CSV and JSON have to quote.
struct Shop {
    Shop() {
        shell.vantlo("init");
        shell.file("shop.json", R"({
            "warehouses": [{"id": "W1", "name": "主仓库"}],
            "bills": [
                {"kind": "stock-in", "id": "B1", "date": "2024-03-05", "lines": [
                    {"goods": "G1", "quantity": 2.5, "receiver": "W1", "class": "A01", "unit": "台"},
                    {"goods": "G,2", "model1": "6.1\" red", "quantity": 3, "receiver": "W2", "class": "B"}]},
                {"kind": "stock-out", "id": "B2", "date": "2024-03-07", "status": 2, "lines": [
                    {"goods": "G1", "quantity": 4, "supplier": "W1", "class": "A01"}]}]})");
        REQUIRE(shell.vantlo("save shop.json").exit_code == 0);
    }

    std::string file(const std::string& name) const {
        std::ifstream stream(shell.path(name));
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    Shell shell;
};

TEST_CASE_FIXTURE(Shop, "The ledger comes as JSON, JSON Lines and CSV") {
    const std::string objects[] = {
        R"({"warehouse": "W1", "warehouse_name": "主仓库", "goods": "G1", "goods_name": "", "model1": "", "model2": "", )"
        R"("status": 0, "class": "A01", "unit": "台", "received": 2.5, "issued": 0, "on_hand": 2.5})",
        R"({"warehouse": "W1", "warehouse_name": "主仓库", "goods": "G1", "goods_name": "", "model1": "", "model2": "", )"
        R"("status": 2, "class": "A01", "unit": "", "received": 0, "issued": 4, "on_hand": -4})",
        R"({"warehouse": "W2", "warehouse_name": "", "goods": "G,2", "goods_name": "", "model1": "6.1\" red", "model2": "", )"
        R"("status": 0, "class": "B", "unit": "", "received": 3, "issued": 0, "on_hand": 3})",
    };
    CHECK(shell.vantlo("ledger --format jsonl").output == objects[0] + "\n" + objects[1] + "\n" + objects[2] + "\n");
    CHECK(shell.vantlo("ledger --format json").output ==
          "[\n  " + objects[0] + ",\n  " + objects[1] + ",\n  " + objects[2] + "\n]\n");
    CHECK(shell.vantlo("ledger --format csv").output ==
          "warehouse,warehouse_name,goods,goods_name,model1,model2,status,class,unit,received,issued,on_hand\r\n"
          "W1,主仓库,G1,,,,0,A01,台,2.5,0,2.5\r\n"
          "W1,主仓库,G1,,,,2,A01,,0,4,-4\r\n"
          "W2,,\"G,2\",,\"6.1\"\" red\",,0,B,,3,0,3\r\n");
    CHECK(shell.vantlo("ledger --format xml").exit_code == 2);
    CHECK(shell.vantlo("ledger --warehouse W9 --format json").output == "[]\n");
    CHECK(shell.vantlo("ledger --warehouse W9 --format jsonl").output.empty());
}

TEST_CASE_FIXTURE(Shop,
                  "A CSV cell that a spreadsheet would take for a formula begins with an apostrophe, on request not") {
    shell.run(
        "sqlite3 vantlo.db \"update Inventory set GId='=1+1,2', Model1='@x', Model2='-5', Class='+A', Unit='-5%' "
        "where Status=2\"");
    CHECK(shell.vantlo("ledger --status 2 --format csv").has("W1,主仓库,\"'=1+1,2\",,'@x,-5,2,'+A,'-5%,0,4,-4\r\n"));
    CHECK(shell.vantlo("ledger --status 2 --format csv --exact-cells")
              .has("W1,主仓库,\"=1+1,2\",,@x,-5,2,+A,-5%,0,4,-4\r\n"));
    CHECK(shell.vantlo("ledger --status 2 --format jsonl").has("\"=1+1,2\""));
}

TEST_CASE_FIXTURE(Shop, "Control characters never reach a terminal, in tables, messages or data") {
    shell.run(
        "sqlite3 vantlo.db \"update Inventory set GId='G'||char(27)||'[2J' where Status=2; "
        "update StockBill set Id='B2'||char(27)||'c', Remarks='a'||char(27)||'[31mb' where Id='B2'; "
        "update StockBillItems set BillId='B2'||char(27)||'c', Gid='G'||char(27)||'[2J' where BillId='B2'\"");
    const std::string id = "\"$(printf 'B2\\033c')\"";
    struct Row {
        std::string command;
        std::string shown;
    };
    const Row rows[] = {{"ledger", "G\\u001B[2J"},
                        {"ledger --format csv", "G\\u001B[2J"},
                        {"bill stock-out " + id, "B2\\u001Bc"},
                        {"delete --dry-run stock-out " + id, "B2\\u001Bc"},
                        {"delete stock-in " + id, "B2\\u001Bc"}};
    for (const Row& row : rows) {
        CAPTURE(row.command);
        Terminal terminal(shell.in_folder("NO_COLOR=1 exec " + shell.program() + " " + row.command));
        terminal.finish();
        CHECK_MESSAGE(terminal.shown().find(row.shown) != std::string::npos, terminal.shown());
        CHECK(terminal.shown().find('\033') == std::string::npos);
    }
    // Piped, data is exact; a message is not, whoever reads it later.
    CHECK(shell.vantlo("ledger --format csv").has("G\033[2J"));
    CHECK(!shell.vantlo("delete stock-in " + id + " 2>&1 >/dev/null").has("\033"));
}

TEST_CASE_FIXTURE(Shop, "The ledger is filtered by warehouse, goods, class and status, and by all of them") {
    struct Row {
        std::string filter;
        std::string total;
    };
    const Row rows[] = {
        {"", "3 rows"},
        {"--warehouse W1", "2 rows"},
        {"--goods 'G,2'", "1 row"},
        {"--class A01", "2 rows"},
        {"--status 2", "1 row"},
        {"--status 1", "0 rows"},
        {"--class A01 --status 0", "1 row"},
        {"--warehouse W2 --goods G1", "0 rows"},
        {"--warehouse W1 --goods G1 --class A01 --status 2", "1 row"},
    };
    for (const Row& row : rows) {
        const Finished shown = shell.vantlo("ledger " + row.filter);
        CHECK_MESSAGE(shown.has("Total of " + row.total + " "), row.filter);
    }
    CHECK(shell.vantlo("ledger --status new").exit_code == 2);
}

TEST_CASE_FIXTURE(Shop, "The table is coloured on a terminal, unless NO_COLOR is set") {
    struct Row {
        std::string environment;
        bool is_coloured;
    };
    const Row rows[] = {{"-u NO_COLOR TERM=xterm", true},
                        {"NO_COLOR= TERM=xterm", true},
                        {"NO_COLOR=1 TERM=xterm", false},
                        {"-u NO_COLOR TERM=dumb", false}};
    for (const Row& row : rows) {
        Terminal terminal(shell.in_folder("exec env " + row.environment + " " + shell.program() + " ledger"));
        CHECK(terminal.finish() == 0);
        CHECK_MESSAGE((terminal.shown().find("\033[31m-4\033[0m") != std::string::npos) == row.is_coloured,
                      row.environment);
        CHECK((terminal.shown().find('\033') != std::string::npos) == row.is_coloured);
    }
    CHECK(!shell.vantlo("ledger").has("\033"));
}

TEST_CASE_FIXTURE(Shop, "A bill is shown with the rows that it moves, and nothing is written for it") {
    const std::string before = shell.vantlo("ledger").output;
    const Finished shown = shell.vantlo("bill stock-in B1");
    CHECK(shown.exit_code == 0);
    CHECK_MESSAGE(shown.has("stock-in 入库单 B1\n"), shown.output);
    CHECK(shown.has("2024-03-05"));
    CHECK(shown.has("W1 G1, status 0                +2.5       0     +2.5\n"));
    CHECK(shown.has("W2 G,2 6.1\" red, status 0        +3       0       +3\n"));
    CHECK(shell.vantlo("bill stock-out B2").has("W1 G1, status 2          0      +4       -4\n"));
    CHECK(shell.vantlo("ledger").output == before);
    CHECK(shell.vantlo("bill stock-in B9").exit_code == 8);
    CHECK(shell.vantlo("bill gift B1").exit_code == 2);
}

TEST_CASE("vantlo explain tells each member's parameters, moves and callers") {
    const Shell shell;
    const Finished list = shell.vantlo("explain");
    CHECK(list.exit_code == 0);
    const Finished in = shell.vantlo("explain in_addinventory");
    CHECK(in.exit_code == 0);
    CHECK(in.has("In_AddInventory(objBillItems As StockBillItemObject, [iCPZT As Integer = 0]) As Long\n"));
    CHECK(in.has("the line's Receiver  iCPZT   +                 +        Actualqty in base units\n"));
    CHECK(in.has("  stock-in 入库单: to post it\n"));
    CHECK(shell.vantlo("explain Out_AddInventory").has("[bUseAbs As Boolean = False]"));
    const Finished chinese = shell.vantlo("--lang zh explain AddInventory_CXD_MJ");
    CHECK(chinese.has("\n表头的 WareHouseID 已有台账行时：收入 = 发出 - 数量，结存 = 结存 + 数量。\n"));
    CHECK(shell.vantlo("explain DATAType").exit_code == 2);
    for (const Member& member : member_table()) {
        if (member.kind != MemberKind::method) continue;
        CHECK(list.has(to_utf8(member.name) + "\n"));
        CHECK_MESSAGE(shell.vantlo("explain " + to_utf8(member.name)).has(": to "), to_utf8(member.name));
    }
}

TEST_CASE("tests/tool/explain.txt holds what vantlo explain tells of every member") {
    const std::string expected = text_of(VANTLO_SOURCE_DIR "/tests/tool/explain.txt");
    CHECK(run_transcript(Shell(), expected) == expected);
    for (const Member& member : member_table()) {
        const std::string command = "$ vantlo explain " + to_utf8(member.name) + "\n";
        const bool is_there = member.kind != MemberKind::method || expected.find(command) != std::string::npos;
        CHECK_MESSAGE(is_there, command);
    }
}

}  // namespace
}  // namespace vantlo::test
