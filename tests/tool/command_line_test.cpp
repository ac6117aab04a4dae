#include <doctest/doctest.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "tests/support/transcript.h"

// Drives the built program as a user does, from a shell.

namespace vantlo::test {
namespace {

constexpr const char* units = R"("units": [{"goods": "G1", "unit": "箱", "factor": 12}])";

std::string stock_in(const std::string& id, const std::string& quantity) {
    return R"({"bills": [{"kind": "stock-in", "id": ")" + id + R"(", "date": "2024-03-05", "lines": [)" +
           R"({"goods": "G1", "unit": "箱", "quantity": )" + quantity + R"(, "receiver": "W1"}]}]})";
}

TEST_CASE("vantlo saves a bill, shows the ledger, takes the bill back") {
    const Shell shell;
    CHECK(shell.vantlo("init").exit_code == 0);
    shell.file("units.json", std::string("{") + units + "}");
    shell.file("bill.json", stock_in("B1", "2.5"));
    CHECK(shell.vantlo("save units.json bill.json").exit_code == 0);
    const Finished shown = shell.vantlo("ledger --warehouse W1 --goods G1");
    CHECK(shown.exit_code == 0);
    CHECK(shown.has(" 30 "));
    CHECK(!shell.vantlo("ledger --warehouse W9").has("W1"));
    CHECK(shell.vantlo("delete stock-in B1").exit_code == 0);
    CHECK(!shell.vantlo("ledger").has(" 30 "));
    const Finished none = shell.vantlo("delete stock-in B1");
    CHECK(none.exit_code == 8);
    CHECK(none.output == "vantlo: stock-in B1: there is no such bill\n");
    CHECK(shell.vantlo("--lang zh bill stock-in B1").output == "vantlo: stock-in B1: 没有这张单据\n");
    CHECK(shell.vantlo("bill stock-in B1").exit_code == 8);
}

TEST_CASE("vantlo shows every statement as it is sent") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("bill.json", stock_in("B1", "2"));
    const Finished saved = shell.vantlo("--show-sql save bill.json");
    CHECK(saved.has("select id,Unit,UnitConverter from GoodsUnit where id='G1' and Unit='箱'\n"));
    CHECK(saved.has("select * from Inventory where WID='W1' and GId='G1' and Model1='' and Model2='' and Status=0\n"));
    CHECK(
        saved.has("insert into Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks) "
                  "values('W1','G1','','',0,'','箱',2,0,2,'')\n"));
}

TEST_CASE("vantlo leaves nothing of a bill that cannot be posted, and says what happened") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("first.json", stock_in("B1", "1"));
    shell.file("huge.json", stock_in("B2", "3e38"));
    CHECK(shell.vantlo("save first.json").exit_code == 0);
    const std::string before = shell.vantlo("ledger").output;
    const Finished failed = shell.vantlo("save huge.json");
    CHECK(failed.exit_code == 1);
    CHECK(failed.has("stock-in B2"));
    CHECK(failed.has("In_AddInventory():数值超出"));
    CHECK(shell.vantlo("--lang en save huge.json").has("In_AddInventory returned 6 (A number is outside"));
    CHECK(shell.vantlo("--lang zh save huge.json").has("In_AddInventory 返回 6（数值超出"));
    CHECK(shell.vantlo("ledger").output == before);
    CHECK(shell.vantlo("delete stock-in B2").exit_code == 8);
}

TEST_CASE("vantlo save passes over a bill that is stored already, and names one that is stored otherwise") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("first.json", stock_in("B1", "0.1"));
    CHECK(shell.vantlo("save first.json").exit_code == 0);
    const std::string before = shell.vantlo("ledger").output;
    const Finished twice = shell.vantlo("save first.json");
    CHECK(twice.exit_code == 0);
    CHECK_MESSAGE(twice.has("Saved 0 bills with 0 lines. 1 bill was there already.\n"), twice.output);
    CHECK(shell.vantlo("--lang zh save --dry-run first.json").has("另有 1 张单据已保存过。"));

    shell.file("other.json", stock_in("B1", "2"));
    const Finished other = shell.vantlo("save other.json");
    CHECK(other.exit_code == 5);
    CHECK(other.output == "other.json:1:39: stock-in B1 is stored already, with other content\n");
    CHECK(shell.vantlo("save --dry-run other.json").exit_code == 5);
    shell.file(
        "loss.json",
        R"({"bills": [{"kind": "loss", "id": "B1", "lines": [{"goods": "G1", "quantity": 1, "supplier": "W1"}]}]})");
    CHECK(shell.vantlo("save loss.json").output ==
          "loss.json:1:35: loss B1: a bill of another kind has this id; all kinds that are kept in StockBill share "
          "their ids\n");
    CHECK(shell.vantlo("save first.json loss.json").exit_code == 5);
    CHECK(shell.vantlo("ledger").output == before);

    // Files of one call, too; and nothing of them is saved if one is refused.
    shell.file("second.json", stock_in("B2", "1"));
    shell.file("third.json", stock_in("B2", "3"));
    CHECK(shell.vantlo("save second.json third.json").has("third.json:1:39: stock-in B2 is stored already"));
    CHECK(shell.vantlo("ledger").output == before);
    CHECK(shell.vantlo("save second.json second.json").has("Saved 1 bill with 1 line. 1 bill was there already.\n"));
}

TEST_CASE("vantlo takes all of a file or nothing, and names what is wrong with it") {
    const Shell shell;
    shell.vantlo("init");
    struct Row {
        const char* content;
        const char* reason;
    };
    const Row rows[] = {
        {"", "no JSON"},
        {"[]", "an object is expected"},
        {R"({"bill": []})", "unknown part \"bill\""},
        {R"({"bills": {}})", "a list is expected"},
        {R"({"bills": [{"kind": "stock-in"}]})", "\"id\" is missing"},
        {R"({"bills": [{"kind": "gift", "id": "B1", "date": "2024-03-05", "lines": []}]})",
         "unknown kind of bill \"gift\""},
        {R"({"bills": [{"kind": "stock-in", "id": " ", "date": "2024-03-05", "lines": []}]})", "\"id\" is empty"},
        {R"({"bills": [{"kind": "stock-in", "id": "B1", "date": "2024-02-30", "lines": []}]})", "a date like"},
        {R"({"bills": [{"kind": "stock-in", "id": "B1", "date": "2024-03-05"}]})", "\"lines\" is missing"},
        {R"({"bills": [{"kind": "stock-in", "id": "B1", "date": "2024-03-05", "lines": [{"quantity": "2"}]}]})",
         "quantity: a number is expected"},
        {R"({"bills": [{"kind": "stock-in", "id": "B1", "date": "2024-03-05", "lines": [{"colour": "red"}]}]})",
         "unknown field \"colour\""},
        {R"({"goods": [{"id": 7}]})", "1:19: id: a text is expected"},
    };
    for (const Row& row : rows) {
        INFO(std::string(row.content));
        shell.file("bad.json", row.content);
        const Finished finished = shell.vantlo("save bad.json");
        CHECK(finished.exit_code == 5);
        CHECK(finished.has("bad.json"));
        CHECK_MESSAGE(finished.has(row.reason), finished.output);
    }
    CHECK(shell.vantlo("save missing.json").exit_code == 5);
}

TEST_CASE("vantlo tries every node of a list, and says what the last one answered") {
    const Shell shell;
    const Finished finished = shell.vantlo("--db Driver=first --db Driver=second ledger");
    CHECK(finished.exit_code == 4);
    CHECK_MESSAGE(finished.has("'second'"), finished.output);
}

TEST_CASE("vantlo answers a wrong command, a wrong kind and a database that cannot be opened by their exit codes") {
    const Shell shell;
    CHECK(shell.vantlo("").exit_code == 2);
    CHECK(shell.vantlo("frobnicate").exit_code == 2);
    CHECK(shell.vantlo("--help").exit_code == 0);
    shell.vantlo("init");
    const Finished unknown = shell.vantlo("delete gift B1");
    CHECK(unknown.exit_code == 2);
    CHECK(unknown.has("stock-in"));
    CHECK(shell.vantlo("--db sqlite:/no/such/folder/shop.db ledger").exit_code == 4);
    CHECK(shell.vantlo("--db 'Driver=none;' ledger").exit_code == 4);
}

TEST_CASE("vantlo ends with 4 where the database does not work, before a posting and beside it") {
    const Shell shell;
    shell.file("bill.json", stock_in("B1", "1"));
    shell.run("sqlite3 empty.db 'create table Other(Id int)'");
    for (const std::string command : {"save bill.json", "import bill.json", "delete stock-in B1", "verify"}) {
        const Finished finished = shell.vantlo("--db empty.db " + command);
        CHECK_MESSAGE(finished.exit_code == 4, command, ": ", finished.output);
        CHECK_MESSAGE(finished.has("the database has no table "), command, ": ", finished.output);
        CHECK_MESSAGE(finished.has("vantlo init makes all tables of a new shop; where the database is a host's, "
                                   "vantlo adopt makes what is missing.\n"),
                      command);
    }
    shell.vantlo("init");
    shell.run("sqlite3 vantlo.db 'drop table BillHistory'");
    const Finished saved = shell.vantlo("save bill.json");
    CHECK(saved.exit_code == 4);
    CHECK_MESSAGE(saved.has("vantlo: stock-in B1: the database has no table BillHistory. "), saved.output);
    CHECK(shell.vantlo("ledger").has("Total of 0 rows"));

    // What the component's own statement meets is the posting's failure.
    shell.vantlo("init");
    shell.run("sqlite3 vantlo.db 'drop table Inventory'");
    const Finished posted = shell.vantlo("save bill.json");
    CHECK(posted.exit_code == 1);
    CHECK(posted.has("In_AddInventory returned -2147217865"));
}

TEST_CASE("vantlo ends with 9 where its output cannot be written") {
    const Shell shell;
    shell.vantlo("init");
    const Finished full = shell.vantlo("ledger >/dev/full");
    CHECK(full.exit_code == 9);
    CHECK(full.output == "vantlo: stdout cannot be written\n");
    CHECK(shell.vantlo("page no/such/folder.html").exit_code == 9);
}

#ifndef __SANITIZE_ADDRESS__  // which ends a program without memory itself
TEST_CASE("vantlo ends with 10 and says so where memory runs out") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("bill.json", stock_in("B1", "1") + std::string(40'000'000, ' '));
    const Finished finished = shell.run("ulimit -v 60000; exec " + shell.program() + " save bill.json");
    CHECK_MESSAGE(finished.exit_code == 10, finished.exit_code, finished.output);
    CHECK(finished.has("vantlo: internal error (std::bad_alloc)"));
}
#endif

TEST_CASE("The help, the manual page and docs/tool.md show the same exit codes") {
    const Shell shell;
    const std::string rows = shell.vantlo("--print exit-codes").output;
    CHECK(rows.starts_with("| 0 | done |\n| 1 | a posting failed"));
    CHECK(std::ranges::count(rows, '\n') == 11);
    CHECK(text_of(VANTLO_SOURCE_DIR "/docs/tool.md").find("|---|---|\n" + rows + "\n") != std::string::npos);
    for (const std::string language : {"en", "zh"}) {
        const Finished help = shell.vantlo("--lang " + language + " --help");
        const std::string page = shell.vantlo("--lang " + language + " --print man").output;
        std::istringstream lines(shell.vantlo("--lang " + language + " --print exit-codes").output);
        for (std::string line; std::getline(lines, line);) {
            const std::size_t middle = line.find(" | ", 2);
            const std::string number = line.substr(2, middle - 2);
            const std::string meaning = line.substr(middle + 3, line.size() - middle - 5);
            CHECK_MESSAGE(help.has("  " + number + "  " + meaning + "\n"), line);
            CHECK_MESSAGE(page.find(".TP\n.B " + number + "\n" + meaning + "\n") != std::string::npos, line);
        }
    }
}

}  // namespace
}  // namespace vantlo::test
