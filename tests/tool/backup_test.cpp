#include <doctest/doctest.h>

#include <fstream>
#include <iterator>

#include "tests/support/shell.h"

// Copies of a database that is in use.

namespace vantlo::test {
namespace {

constexpr int bill_count = 2000;
constexpr int lines_a_bill = 5;

std::string many_bills() {
    std::string text = "bill.kind,bill.id,bill.date,goods,quantity,receiver\n";
    for (int line = 0; line < bill_count * lines_a_bill; ++line) {
        text +=
            "stock-in,B" + std::to_string(line / lines_a_bill) + ",2024-03-05,G" + std::to_string(line % 7) + ",1,W1\n";
    }
    return text;
}

std::string content(const Shell& shell, const std::string& name) {
    std::ifstream file(shell.path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST_CASE("A copy taken in the middle of an import holds whole bills, and goes on from there") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("bills.csv", many_bills());
    const Finished copied =
        shell.run(shell.program() +
                  " import bills.csv 2>import.log & importing=$!; copies=0; "
                  "while kill -0 $importing 2>/dev/null && [ $copies -lt 60 ]; do copies=$((copies + 1)); " +
                  shell.program() + " backup copy$copies.db || exit 1; done; wait $importing");
    REQUIRE_MESSAGE(copied.exit_code == 0, copied.output);
    int partial = 0;
    std::string latest_partial;
    for (int copy = 1; shell.run("test -e copy" + std::to_string(copy) + ".db").exit_code == 0; ++copy) {
        const std::string name = "copy" + std::to_string(copy) + ".db";
        const auto count = [&](const std::string& what) {
            return std::stoi(shell.run("sqlite3 " + name + " 'select coalesce(" + what + "'").output);
        };
        const int bills = count("count(*), 0) from StockBill");
        CHECK(count("count(*), 0) from StockBillItems") == bills * lines_a_bill);
        CHECK(count("sum(CurrentQty), 0) from Inventory") == bills * lines_a_bill);
        CHECK(count("count(*), 0) from PostingJournal") == bills * lines_a_bill);
        if (bills == 0 || bills == bill_count) continue;
        ++partial;
        latest_partial = name;
    }
    REQUIRE(partial > 0);
    CHECK(shell.vantlo("--db " + latest_partial + " verify").exit_code == 0);
    CHECK(shell.vantlo("--db " + latest_partial + " import bills.csv").exit_code == 0);
    CHECK(shell.run("sqlite3 " + latest_partial + " 'select sum(CurrentQty) from Inventory'").output ==
          std::to_string(bill_count * lines_a_bill) + "\n");
    CHECK(!shell.run("ls -A").has(".new"));
}

TEST_CASE("A copy is written over nothing that is there, unless it is a database and the user says so") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("notes.txt", "my notes");
    CHECK(shell.vantlo("backup copy.db").exit_code == 0);
    const std::string copy = content(shell, "copy.db");
    CHECK(copy.starts_with("SQLite format 3"));
    shell.file("bill.json", R"({"bills": [{"kind": "stock-in", "id": "B1", "lines": [
        {"goods": "G1", "quantity": 1, "receiver": "W1"}]}]})");
    shell.vantlo("save bill.json");
    CHECK(shell.vantlo("backup copy.db").exit_code == 7);
    CHECK(content(shell, "copy.db") == copy);
    CHECK(shell.vantlo("backup --replace notes.txt").exit_code == 7);
    CHECK(content(shell, "notes.txt") == "my notes");
    CHECK(shell.vantlo("backup --replace vantlo.db").has("vantlo.db is the database itself"));
    CHECK(shell.vantlo("backup --replace copy.db").exit_code == 0);
    CHECK(shell.vantlo("--db copy.db ledger").has("G1"));
    CHECK(shell.vantlo("backup no/such/folder.db").exit_code == 9);
    CHECK(shell.vantlo("--db none.db backup other.db").exit_code == 4);
    CHECK(!shell.run("ls -A").has(".new"));
    CHECK(shell.run("ls -A").output.find("other.db") == std::string::npos);
    CHECK(shell.vantlo("--lang zh backup copy.db").has("copy.db 已存在，未改动"));
}

}  // namespace
}  // namespace vantlo::test
