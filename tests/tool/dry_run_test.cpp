#include <doctest/doctest.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "ado/native/open_connection.h"
#include "tests/support/shell.h"

// A dry run makes every change and rolls it back.

namespace vantlo::test {
namespace {

constexpr const char* three_bills = R"({
    "units": [{"goods": "G1", "unit": "箱", "factor": 12}],
    "bills": [
        {"kind": "stock-in", "id": "B1", "date": "2024-03-05", "lines": [
            {"goods": "G1", "unit": "箱", "quantity": 2, "receiver": "W1"}]},
        {"kind": "stock-out", "id": "B2", "date": "2024-03-06", "lines": [
            {"goods": "G1", "quantity": 5, "supplier": "W1"}]},
        {"kind": "assembly", "id": "B3", "date": "2024-03-07", "goods": "G9", "warehouse": "W1", "quantity": 1, "lines": [
            {"goods": "G1", "quantity": 1, "warehouse": "W1"}]}]})";

std::string content(const Shell& shell, const std::string& name) {
    std::ifstream file(shell.path(name), std::ios::binary);
    REQUIRE(file);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST_CASE("A dry run shows the statements as they are sent then, and each row before and after") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("bills.json", three_bills);
    const Finished rehearsed = shell.vantlo("save --dry-run bills.json 2>/dev/null");
    CHECK(rehearsed.exit_code == 0);
    // A later bill sees the changes of the earlier ones.
    CHECK_MESSAGE(rehearsed.has("-- W1 G1, status 0: received none → 24, issued none → 0, on hand none → 24\n"),
                  rehearsed.output);
    CHECK(rehearsed.has("-- W1 G1, status 0: received 24 → 24, issued 0 → 5, on hand 24 → 19\n"));
    CHECK(
        rehearsed.has("-- W1 G1, status 0: received 24 → 24, issued 5 → 6, on hand 19 → 18\n"
                      "-- W1 G9, status 0: received none → 1, issued none → 0, on hand none → 1\n"));

    const Finished sent = shell.vantlo("--show-sql save bills.json 2>&1 | grep -v ^Saved");
    std::string statements;
    std::istringstream lines(rehearsed.output);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("--")) statements += line.substr(0, line.rfind(';')) + "\n";
    }
    CHECK(statements == sent.output);
}

TEST_CASE("A dry run of every writing command leaves the database file as it was, byte for byte") {
    const Shell shell;
    CHECK(shell.vantlo("init --dry-run").exit_code == 0);
    CHECK(!std::filesystem::exists(shell.path("vantlo.db")));
    shell.vantlo("init");
    shell.file("bills.json", three_bills);
    const std::string empty = content(shell, "vantlo.db");
    CHECK(shell.vantlo("save --dry-run bills.json").exit_code == 0);
    CHECK(content(shell, "vantlo.db") == empty);
    shell.vantlo("save bills.json");
    const std::string full = content(shell, "vantlo.db");
    REQUIRE(full != empty);
    const Finished rehearsed = shell.vantlo("delete --dry-run stock-in B1");
    CHECK(rehearsed.exit_code == 0);
    CHECK(rehearsed.has("received 24 → 0"));
    CHECK(content(shell, "vantlo.db") == full);
    CHECK(!std::filesystem::exists(shell.path("vantlo.db-wal")));
    CHECK(shell.vantlo("delete stock-in B1").exit_code == 0);
}

TEST_CASE("A dry run fails where the real one would, by the same exit code") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("bills.json", three_bills);
    shell.vantlo("save bills.json");
    shell.file("other.json", R"({"bills": [{"kind": "stock-in", "id": "B1", "lines": [
        {"goods": "G1", "quantity": 7, "receiver": "W1"}]}]})");
    CHECK(shell.vantlo("save --dry-run other.json").exit_code == 5);
    CHECK(shell.vantlo("save other.json").exit_code == 5);
    CHECK(shell.vantlo("delete --dry-run stock-in B9").exit_code == 8);
    CHECK(shell.vantlo("delete --dry-run --fail-on-negative stock-in B1").exit_code == 7);
    CHECK(shell.vantlo("delete --fail-on-negative stock-in B1").exit_code == 7);
    CHECK(shell.vantlo("save --dry-run none.json").exit_code == 5);
    CHECK(shell.vantlo("--db none.db save --dry-run bills.json").exit_code == 4);
}

TEST_CASE("Keys with line breaks are refused, and a dry run of one that is stored comments each of its lines") {
    const Shell shell;
    shell.vantlo("init");
    for (const std::string field :
         {"\"id\": \"B1\\ndelete from Inventory;\"", "\"id\": \"B1\\u0085\"", "\"id\": \"B\\u001b[2J\""}) {
        shell.file("bills.json", R"({"bills": [{"kind": "stock-in", )" + field +
                                     R"(, "lines": [{"goods": "G1", "quantity": 1, "receiver": "W1"}]}]})");
        const Finished refused = shell.vantlo("save --dry-run bills.json");
        CHECK(refused.exit_code == 5);
        CHECK(refused.has("id: the text contains a line break or another control character"));
    }
    shell.file("bills.json", three_bills);
    shell.vantlo("save bills.json");
    const auto database = open_connection("sqlite:" + shell.path("vantlo.db"));
    for (const char* const table : {"update StockBill set Id=", "update StockBillItems set BillId="}) {
        database->run_script(std::string(table) + "'B1\ndelete from Inventory;' where " +
                             (std::string(table).find("Items") == std::string::npos ? "Id" : "BillId") + "='B1';");
    }
    const std::string before = shell.vantlo("ledger --format csv").output;
    const Finished script = shell.run(
        shell.program() + " delete --dry-run stock-in \"$(printf 'B1\\ndelete from Inventory;')\" 2>/dev/null");
    CHECK(script.exit_code == 0);
    CHECK_MESSAGE(script.output.starts_with("-- stock-in B1\n-- delete from Inventory;\n"), script.output);
    CHECK(shell.vantlo("ledger --format csv").output == before);
}

}  // namespace
}  // namespace vantlo::test
