#include <doctest/doctest.h>

#include "tests/support/shell.h"
#include "tests/support/terminal.h"

// Counting stock: a sheet is written, filled in and entered.

namespace vantlo::test {
namespace {

struct Shop {
    explicit Shop(const std::string& init = "init") {
        shell.vantlo(init);
        shell.file("shop.json", R"({
            "warehouses": [{"id": "W1", "name": "Main"}, {"id": "W2"}],
            "goods": [{"id": "G1", "name": "Screen", "unit": "pc"}, {"id": "G2", "name": "Cable", "unit": "m"},
                      {"id": "=G3", "unit": "pc"}],
            "units": [{"goods": "G1", "unit": "box", "factor": 10}],
            "bills": [{"kind": "stock-in", "id": "B1", "lines": [
                {"goods": "G1", "quantity": 2, "receiver": "W1", "unit": "box", "class": "A"},
                {"goods": "G1", "model1": "red", "quantity": 5, "receiver": "W1"},
                {"goods": "G2", "quantity": 2.5, "receiver": "W1"}, {"goods": "=G3", "quantity": 1, "receiver": "W1"}]}]})");
        REQUIRE(shell.vantlo("save shop.json").exit_code == 0);
    }

    /// Writes a sheet of W1, with these counts in its rows, and what else follows.
    void count(const std::vector<std::string>& counts, const std::string& more = "") const {
        std::istringstream sheet(shell.vantlo("count sheet W1 --format csv 2>/dev/null").output);
        std::string filled, row;
        std::getline(sheet, row);
        filled = row + "\n";
        for (const std::string& counted : counts) {
            REQUIRE(std::getline(sheet, row));
            row.pop_back();  // the carriage return
            filled += row + counted + "\r\n";
        }
        CHECK_FALSE(std::getline(sheet, row));
        shell.file("w1.csv", filled + more);
    }

    void save(const std::string& bill) const {
        shell.file("bill.json", "{\"bills\": [" + bill + "]}");
        REQUIRE(shell.vantlo("save bill.json").exit_code == 0);
    }

    /// `goods model1 received issued on_hand` of W1, those without stock as well.
    [[nodiscard]] std::string ledger() const {
        return shell
            .run(
                "sqlite3 -separator ' ' vantlo.db \"select GId,Model1,Status,InQty,OutQty,CurrentQty from Inventory "
                "where WID='W1' order by GId,Model1,Status\"")
            .output;
    }

    Shell shell;
};

const std::string untouched = "=G3  0 1 0 1\nG1  0 20 0 20\nG1 red 0 5 0 5\nG2  0 2.5 0 2.5\n";

TEST_CASE_FIXTURE(Shop,
                  "A counting sheet has every key of the warehouse, its name in every row, and room for the count") {
    const Finished sheet = shell.vantlo("count sheet W1 --format csv");
    CHECK(sheet.output.starts_with(
        "sheet,warehouse,goods,goods_name,model1,model2,status,unit,expected,counted\r\nPD20"));
    CHECK(sheet.has(",W1,'=G3,,,,0,pc,1,\r\n"));
    CHECK(sheet.has(",W1,G1,Screen,,,0,pc,20,\r\n"));
    CHECK(sheet.has(",W1,G1,Screen,red,,0,pc,5,\r\n"));
    CHECK(shell.vantlo("count sheet W1 --blind --format csv").has(",W1,G2,Cable,,,0,m,,\r\n"));
    CHECK(shell.vantlo("count sheet W2 --format csv").has(",W2,,,,,,,,\r\n"));
    CHECK(shell.vantlo("count sheet W2 --all-goods --format csv").has(",W2,G2,Cable,,,0,m,0,\r\n"));
    const Finished paper = shell.vantlo("count sheet W1");
    CHECK(paper.has("Counting sheet PD20"));
    CHECK(paper.has("________"));
    CHECK(shell.vantlo("count sheet W9").exit_code == 5);
    CHECK(shell.vantlo("count sheet '*'").exit_code == 5);
    CHECK(shell.vantlo("count lunch W1").exit_code == 2);
}

TEST_CASE_FIXTURE(Shop, "Differences become loss and overage bills in base units, and what is not counted stays") {
    count({"", "18", "7.5", "2.5"});
    const Finished rehearsed = shell.vantlo("count enter w1.csv --dry-run --format csv");
    CHECK(rehearsed.exit_code == 0);
    CHECK(rehearsed.has("G1,Screen,,,0,pc,20,18,-2,0\r\nG1,Screen,red,,0,pc,5,7.5,2.5,0\r\n"));
    CHECK(rehearsed.has("1 row was not counted"));
    CHECK(rehearsed.has("3 rows counted, 2 of them different: 2 bills to be saved"));
    CHECK(ledger() == untouched);
    CHECK(shell.vantlo("count enter w1.csv </dev/null").exit_code == 2);
    CHECK(ledger() == untouched);
    CHECK(shell.vantlo("count enter w1.csv --yes").exit_code == 0);
    CHECK(ledger() == "=G3  0 1 0 1\nG1  0 20 2 18\nG1 red 0 7.5 0 7.5\nG2  0 2.5 0 2.5\n");
    CHECK(shell.vantlo("bills --kind loss --kind overage --text 盘点 --format csv").has("-L0,1,盘点 PD20"));
    CHECK(shell.vantlo("verify").exit_code == 0);
}

TEST_CASE_FIXTURE(Shop, "A sheet is entered once, and again only after its bills were taken back") {
    count({"1", "18", "5", "2.5"});
    REQUIRE(shell.vantlo("count enter w1.csv --yes").exit_code == 0);
    const std::string once = ledger();
    const Finished again = shell.vantlo("count enter w1.csv --yes");
    CHECK(again.exit_code == 7);
    CHECK(again.has("this sheet was entered already: PD20"));
    CHECK(ledger() == once);
    const std::string id = shell.run("sqlite3 vantlo.db \"select Id from StockBill where Kind='loss'\"").output;
    CHECK(shell.vantlo("delete loss " + id.substr(0, id.find('\n'))).exit_code == 0);
    CHECK(ledger() == untouched);
    CHECK(shell.vantlo("count enter w1.csv --yes").exit_code == 0);
    CHECK(ledger() == once);
}

TEST_CASE_FIXTURE(Shop, "What is posted between sheet and entry is no difference") {
    count({"1", "18", "5", "2"});
    save(R"({"kind": "stock-out", "id": "B2", "lines": [{"goods": "G1", "quantity": 3, "supplier": "W1"}]})");
    save(R"({"kind": "stock-in", "id": "B3", "lines": [{"goods": "G2", "quantity": 10, "receiver": "W1"}]})");
    const Finished entered = shell.vantlo("count enter w1.csv --yes --format csv");
    CHECK(entered.has("G1,Screen,,,0,pc,20,18,-2,-3\r\nG2,Cable,,,0,m,2.5,2,-0.5,10\r\n"));
    CHECK(ledger() == "=G3  0 1 0 1\nG1  0 20 5 15\nG1 red 0 5 0 5\nG2  0 12.5 0.5 12\n");
}

TEST_CASE_FIXTURE(Shop, "The terminal asks before a count is saved") {
    count({"1", "18", "5", "2.5"});
    Terminal terminal(shell.in_folder(shell.program() + " count enter w1.csv"));
    CHECK(terminal.wait_for("Go on? [y/N] "));
    terminal.type("n\n");
    CHECK(terminal.finish() == 7);
    CHECK(ledger() == untouched);
}

TEST_CASE_FIXTURE(Shop, "An empty ledger that is counted is opening stock, rows added by hand among it") {
    const std::string sheet = shell.vantlo("count sheet W2 --format csv").output;
    shell.file("w2.csv", sheet + ",,G1,,,,,,,12\r\n,,G2,,blue,,2,,,3.25\r\n,,,,,,,,,\r\n");
    CHECK(shell.vantlo("count enter w2.csv --yes").exit_code == 0);
    CHECK(shell.vantlo("ledger --warehouse W2 --format csv").has("W2,,G1,Screen,,,0,,pc,12,0,12\r\n"));
    CHECK(shell.vantlo("ledger --warehouse W2 --format csv").has("W2,,G2,Cable,blue,,2,,m,3.25,0,3.25\r\n"));
    shell.file("w2.csv", shell.vantlo("count sheet W2 --format csv").output + ",,G7,,,,,,,1\r\n");
    const Finished unknown = shell.vantlo("count enter w2.csv --yes");
    CHECK(unknown.exit_code == 5);
    CHECK(unknown.has("there are no such goods: G7"));
}

TEST_CASE_FIXTURE(Shop, "A sheet that a spreadsheet saved in its own way is read all the same") {
    count({"1", "18", "5", "2.5"});
    // A byte order mark, semicolons, decimal commas, a column of somebody's own, Chinese in GB18030.
    shell.run(
        "sed -e 's/,/;/g' -e 's/2[.]5$/2,25/' -e 's/2[.]5\\r$/2,25\\r/' -e '1s/\\r*$/;意见/' -e '2,$s/\\r*$/;好/' "
        "w1.csv > s.csv");
    shell.run("{ printf '\\357\\273\\277'; cat s.csv; } > bom.csv; iconv -f UTF-8 -t GB18030 s.csv > gb.csv");
    for (const std::string file : {"bom.csv", "gb.csv"}) {
        const Finished shown = shell.vantlo("count enter " + file + " --dry-run --format csv");
        CHECK_MESSAGE(shown.has("G1,Screen,,,0,pc,20,18,-2,0\r\nG2,Cable,,,0,m,2.5,2.25,-0.25,0\r\n"), shown.output);
    }
}

TEST_CASE_FIXTURE(Shop, "What cannot be a count is told with its place, and nothing is saved") {
    count({"1", "many", "-1", "2.12345"},
          ",,G1,,red,,0,,,4\r\n,,G1,,,,new,,,4\r\n,,,,,,,,,9\r\nPD20240101000000-1-abcd,W2,G2,,,,,,,1\r\nx\r\n");
    const Finished refused = shell.vantlo("count enter w1.csv --yes");
    CHECK(refused.exit_code == 5);
    for (const char* const fault :
         {"w1.csv:3:", "\"many\" is no quantity", "w1.csv:4:", "nobody counts less than nothing",
          "w1.csv:5:", "four decimals at most", "w1.csv:6:1: the same goods, models and status as in line 4",
          "\"new\" is no status", "a quantity without goods", "this row is of another sheet", "the row has 1 values"}) {
        CHECK_MESSAGE(refused.has(fault), fault, "\n", refused.output);
    }
    CHECK(ledger() == untouched);
    shell.file("w1.csv", "goods,counted\nG1,3\n");
    CHECK(shell.vantlo("count enter w1.csv --yes").has("there is no column \"sheet\""));
    shell.file("w1.csv", "sheet,warehouse,goods,counted\n,,G1,3\n");
    CHECK(shell.vantlo("count enter w1.csv --yes").has("no row has the sheet's name"));
    CHECK(shell.vantlo("count enter none.csv").exit_code == 5);
}

TEST_CASE_FIXTURE(Shop, "A count of many digits is saved exactly") {
    count({"1", "12345678.1234", "5", "2.5"});
    CHECK(shell.vantlo("count enter w1.csv --yes").exit_code == 0);
    CHECK(shell.vantlo("ledger --goods G1 --format csv").has(",12345678.1234\r\n"));
    CHECK(shell.vantlo("verify").exit_code == 0);
}

TEST_CASE_FIXTURE(Shop, "A sheet of another journal is refused") {
    count({"1", "18", "5", "2.5"});
    shell.run("sed -i 's/-[0-9]*-\\([0-9a-f]\\{4\\},W1\\)/-900-\\1/' w1.csv");
    const Finished refused = shell.vantlo("count enter w1.csv --yes");
    CHECK(refused.exit_code == 7);
    CHECK(refused.has("the journal of movements is not the one"));
}

struct WithoutJournal : Shop {
    WithoutJournal() : Shop("init --no-journal") {}
};

TEST_CASE_FIXTURE(WithoutJournal, "Without a journal a sheet is good until the ledger moves") {
    CHECK(shell.vantlo("count sheet W1 --format csv").has("keeps no journal of movements"));
    CHECK(shell.vantlo("count sheet W1 --blind").exit_code == 7);
    count({"1", "18", "5", "2.5"});
    save(R"({"kind": "stock-in", "id": "B2", "lines": [{"goods": "G2", "quantity": 1, "receiver": "W1"}]})");
    const Finished moved = shell.vantlo("count enter w1.csv --yes");
    CHECK(moved.exit_code == 7);
    CHECK(moved.has("the ledger has changed: G2"));
    count({"1", "18", "5", "3.5"});
    CHECK(shell.vantlo("count enter w1.csv --yes").exit_code == 0);
    CHECK(ledger() == "=G3  0 1 0 1\nG1  0 20 2 18\nG1 red 0 5 0 5\nG2  0 3.5 0 3.5\n");
}

}  // namespace
}  // namespace vantlo::test
