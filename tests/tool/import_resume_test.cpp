#include <doctest/doctest.h>
#include <sys/resource.h>

#include <string>

#include "output/progress_bar.h"
#include "tests/support/shell.h"
#include "tests/support/terminal.h"

// A long import in a terminal is killed, interrupted and resumed; the sums are exact in the end.

namespace vantlo::test {
namespace {

// Fewer in builds that are not optimised, which may have sanitizers in them.
#ifdef NDEBUG
constexpr int bill_count = 10'000;
#else
constexpr int bill_count = 1'000;
#endif
constexpr int lines_a_bill = 10;
constexpr int line_count = bill_count * lines_a_bill;
constexpr int goods_count = 50;

/// Receipts of 1, 2 and 3 boxes in turn, each box of 12.
std::string many_bills() {
    std::string text = "bill.kind,bill.id,bill.date,goods,unit,quantity,receiver\n";
    for (int line = 0; line < line_count; ++line) {
        text += "stock-in,B" + std::to_string(line / lines_a_bill) + ",2024-03-05,G" +
                std::to_string(line % goods_count) + ",box," + std::to_string(1 + line % 3) + ",W1\n";
    }
    return text;
}

long expected_sum() {
    long sum = 0;
    for (int line = 0; line < line_count; ++line) sum += 12 * (1 + line % 3);
    return sum;
}

std::string units() {
    std::string text = "goods,unit,factor\n";
    for (int goods = 0; goods < goods_count; ++goods) text += "G" + std::to_string(goods) + ",box,12\n";
    return text;
}

std::string query(const Shell& shell, const std::string& statement) {
    return shell.run("sqlite3 vantlo.db '" + statement + "'").output;
}

/// Waits until the progress bar shows so many percent.
bool wait_for_share(Terminal& terminal, int percent) {
    return terminal.wait_until([&] {
        const std::string& shown = terminal.shown();
        const std::size_t sign = shown.rfind("%  ");
        return sign != std::string::npos && sign >= 3 && std::stoi(shown.substr(sign - 3, 3)) >= percent;
    });
}

double processor_seconds_of_children() {
    rusage used{};
    ::getrusage(RUSAGE_CHILDREN, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e6;
}

TEST_CASE("vantlo import goes on after it was killed and interrupted, and posts nothing twice") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("units.csv", units());
    shell.file("bills.csv", many_bills());
    const std::string import_on_terminal =
        shell.in_folder("TERM=xterm exec " + Shell::program() + " import units.csv bills.csv");
    const std::string journal_rows = "select count(*) from PostingJournal";
    const double before = processor_seconds_of_children();
    {
        Terminal terminal(import_on_terminal);
        REQUIRE_MESSAGE(wait_for_share(terminal, 30), terminal.shown());
        terminal.kill();
        INFO(terminal.shown());
        CHECK(terminal.shown().find("\r\x1B[K[########") != std::string::npos);
        CHECK(terminal.shown().find(" of " + std::to_string(line_count + goods_count) + " lines  ") !=
              std::string::npos);
        CHECK(terminal.shown().find(" a second  0:") != std::string::npos);
        CHECK(terminal.shown().find(" left") != std::string::npos);
    }
    const int after_kill = std::stoi(query(shell, journal_rows));
    CHECK(after_kill > 0);
    CHECK(after_kill < line_count);
    {
        Terminal terminal(import_on_terminal);
        REQUIRE_MESSAGE(wait_for_share(terminal, 50), terminal.shown());
        terminal.type("\x03");
        CHECK(terminal.finish() == 6);
        const int lines = std::stoi(query(shell, journal_rows)) - after_kill;
        const int left = (line_count - after_kill - lines) / lines_a_bill;
        CHECK(lines > 0);
        CHECK(left > 0);
        const std::string told = "Interrupted: imported " + std::to_string(lines / lines_a_bill) + " bills with " +
                                 std::to_string(lines) + " lines, " + std::to_string(left) +
                                 " are left, and what was begun is rolled back. The same command goes on from there.";
        CHECK_MESSAGE(terminal.shown().find(told) != std::string::npos, terminal.shown());
    }
    const Finished rest = shell.vantlo("import units.csv bills.csv");
    CHECK_MESSAGE(rest.exit_code == 0, rest.output);
    const Finished again = shell.vantlo("import units.csv bills.csv");
    CHECK(again.output == "Imported " + std::to_string(goods_count) +
                              " rows of master data and 0 bills with 0 lines; " + std::to_string(bill_count) +
                              " bills were there already.\n");
    CHECK(query(shell, "select sum(InQty), sum(CurrentQty), count(*) from Inventory") ==
          std::to_string(expected_sum()) + "|" + std::to_string(expected_sum()) + "|" + std::to_string(goods_count) +
              "\n");
    CHECK(query(shell, journal_rows) == std::to_string(line_count) + "\n");
    CHECK(query(shell, "select count(*) from StockBillItems") == std::to_string(line_count) + "\n");
    const double seconds = processor_seconds_of_children() - before;
    MESSAGE(line_count, " lines, begun four times, took ", seconds, " s of the processor");
#ifdef NDEBUG
    CHECK(seconds < 30);
#endif
}

TEST_CASE("vantlo import tells bills that the database knows otherwise, and takes back what it has imported") {
    const Shell shell;
    shell.vantlo("init");
    const auto bill = [](const std::string& kind, const std::string& id, const std::string& quantity) {
        return R"({"kind": ")" + kind + R"(", "id": ")" + id + R"(", "lines": [{"goods": "G1", "quantity": )" +
               quantity + (kind == "loss" ? "" : ", \"receiver\": \"W1\"") +
               (kind == "stock-in" ? "" : ", \"supplier\": \"W2\"") + "}]}\n";
    };
    shell.file("saved.jsonl", bill("stock-in", "B1", "1"));
    CHECK(shell.vantlo("save saved.jsonl").exit_code == 0);
    shell.file("imported.jsonl", bill("stock-in", "B2", "2") + bill("stock-in", "B3", "3") + bill("stock", "B4", "4"));
    CHECK(shell.vantlo("import imported.jsonl").exit_code == 0);
    CHECK(shell.run("sqlite3 vantlo.db \"delete from StockBill where Id='B4'\"").exit_code == 0);
    shell.file("more.jsonl", bill("stock-in", "B1", "7") + bill("stock-in", "B2", "9") + bill("loss", "B3", "3") +
                                 bill("stock", "B4", "4") + bill("stock-in", "B5", "5"));
    const std::string before = shell.vantlo("ledger").output;
    const Finished refused = shell.vantlo("import more.jsonl");
    CHECK(refused.exit_code == 5);
    CHECK(refused.output ==
          "more.jsonl:1:28: stock-in B1 is stored already, with other content\n"
          "more.jsonl:2:28: stock-in B2 was imported before with other content\n"
          "more.jsonl:3:24: loss B3: a bill of another kind has this id; all kinds that are kept in StockBill share "
          "their "
          "ids\n"
          "more.jsonl:4:25: stock B4 was imported before, but is no longer stored\n");
    CHECK(shell.vantlo("ledger").output == before);

    CHECK(shell.vantlo("import saved.jsonl").output ==
          "Imported 0 rows of master data and 0 bills with 0 lines; 1 bill was there already.\n");
    CHECK(shell.vantlo("ledger").output == before);

    CHECK(shell.vantlo("delete stock-in B2").exit_code == 0);
    shell.file("again.jsonl", bill("stock-in", "B2", "9"));
    CHECK(shell.vantlo("import again.jsonl").output ==
          "Imported 0 rows of master data and 1 bill with 1 line; 0 bills were there already.\n");
}

TEST_CASE("vantlo import tells which bill cannot be posted, and goes on once it can") {
    const Shell shell;
    shell.vantlo("init");
    const auto bills = [](const std::string& quantity) {
        return "bill.kind,bill.id,goods,quantity,receiver\nstock-in,B1,G1,1,W1\nstock-in,B2,G1," + quantity + ",W1\n";
    };
    shell.file("bills.csv", bills("3e38"));
    const Finished failed = shell.vantlo("import bills.csv");
    CHECK(failed.exit_code == 1);
    CHECK(failed.has("vantlo: stock-in B2: In_AddInventory returned 6"));
    CHECK(failed.has("\nImported 0 bills with 0 lines, 2 are left."));
    CHECK(query(shell, "select count(*) from StockBill") == "0\n");
    shell.file("bills.csv", bills("3"));
    CHECK(shell.vantlo("import bills.csv").exit_code == 0);
    CHECK(query(shell, "select CurrentQty from Inventory") == "4\n");
}

TEST_CASE("vantlo import replaces master data that is there already") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("units.csv", "goods,unit,factor\nG1,box,12\nG2,box,6\n");
    CHECK(shell.vantlo("import units.csv").exit_code == 0);
    shell.file("units.csv", "goods,unit,factor\nG1,box,10\n");
    const Finished changed = shell.vantlo("import units.csv");
    CHECK(changed.exit_code == 0);
    CHECK_MESSAGE(changed.has("units G1 box: factor \"12\" becomes \"10\"\n"), changed.output);
    CHECK(query(shell, "select * from GoodsUnit order by id") == "G1|box|10.0\nG2|box|6.0\n");
    CHECK(!shell.vantlo("import units.csv").has("becomes"));
}

TEST_CASE("vantlo import keeps the master data that a file does not have") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("goods.csv", "id,name,class,unit,remarks\nG1,Screen,A01,pc,first\n");
    CHECK(shell.vantlo("import goods.csv").exit_code == 0);
    shell.file("goods.csv", "id,name,class,unit\nG1,Big screen,,pc\nG2,Cable,,\n");
    const std::string change = "goods G1: name \"Screen\" becomes \"Big screen\"\n";
    CHECK(shell.vantlo("import --dry-run goods.csv").has(change));
    CHECK(shell.vantlo("import goods.csv").has(change));
    CHECK(!shell.vantlo("import goods.csv").has("becomes"));
    CHECK(query(shell, "select ID, Name, Class, Unit, Remarks from Goods") ==
          "G1|Big screen|A01|pc|first\nG2|Cable|||\n");
    shell.file("goods.json", R"({"goods": [{"id": "G1", "remarks": ""}]})");
    CHECK(shell.vantlo("save goods.json").has("goods G1: remarks \"first\" becomes \"\"\n"));
    CHECK(query(shell, "select Name, Remarks from Goods where ID=\"G1\"") == "Big screen|\n");
}

TEST_CASE("A changed factor of a unit in use needs the user's word") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("units.csv", "goods,unit,factor\nG1,box,12\n");
    shell.file("bills.csv", "bill.kind,bill.id,goods,unit,quantity,receiver\nstock-in,B1,G1,box,2,W1\n");
    CHECK(shell.vantlo("import units.csv bills.csv").exit_code == 0);
    shell.file("units.csv", "goods,unit,factor\nG1,box,10\n");
    for (const std::string command : {"import", "save"}) {
        const Finished refused = shell.vantlo(command + " units.csv </dev/null");
        CHECK(refused.exit_code == 2);
        CHECK_MESSAGE(refused.has("units G1 box: factor 12 becomes 10, with 1 stored line in that unit\n"),
                      refused.output);
    }
    CHECK(query(shell, "select UnitConverter from GoodsUnit") == "12.0\n");
    CHECK(shell.vantlo("import --dry-run units.csv").exit_code == 0);
    CHECK(shell.vantlo("import --yes units.csv").exit_code == 0);
    CHECK(query(shell, "select UnitConverter from GoodsUnit") == "10.0\n");
}

TEST_CASE("A progress line shows share, rate and remaining time, and gives way where there is no room") {
    using std::chrono::seconds;
    struct Row {
        std::size_t done, total;
        seconds passed;
        std::size_t width;
        const char* line;
    };
    const Row rows[] = {
        {0, 100, seconds(0), 60, "[..............]   0%  0 of 100 lines  0 a second  -:-- left"},
        {50, 100, seconds(5), 70, "[###########...........]  50%  50 of 100 lines  10 a second  0:05 left"},
        {100, 100, seconds(5), 70, "[#####################] 100%  100 of 100 lines  20 a second  0:00 left"},
        {1, 7201, seconds(1), 70, "[....................]   0%  1 of 7201 lines  1 a second  2:00:00 left"},
        {50, 100, seconds(5), 20, " 50%"},
        {0, 0, seconds(1), 60, "[################] 100%  0 of 0 lines  0 a second  -:-- left"},
    };
    for (const Row& row : rows) {
        INFO(row.line);
        CHECK(progress_line(row.done, row.total, row.passed, row.width, Language::english) == row.line);
    }
    CHECK(progress_line(50, 100, seconds(5), 70, Language::chinese) ==
          "[###############................]  50%  50/100 行  10 行/秒  剩余 0:05");
}

}  // namespace
}  // namespace vantlo::test
