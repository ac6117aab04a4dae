#include <doctest/doctest.h>

#include "tests/support/shell.h"

// Minimum stock, and stock that does not move.

namespace vantlo::test {
namespace {

struct Shop {
    Shop() {
        shell.vantlo("init");
        shell.file("shop.json", R"({
            "warehouses": [{"id": "W1", "name": "Main"}],
            "goods": [{"id": "G1", "name": "Screen", "unit": "pc"}, {"id": "G2", "name": "Cable", "unit": "m"}],
            "bills": [{"kind": "stock-in", "id": "B1", "lines": [
                {"goods": "G1", "quantity": 4, "receiver": "W1"}, {"goods": "G2", "quantity": 2.5, "receiver": "W1"}]}]})");
        REQUIRE(shell.vantlo("save shop.json").exit_code == 0);
    }

    [[nodiscard]] std::string low(const std::string& options = "") const {
        const std::string csv = shell.vantlo("low --format csv " + options + " 2>/dev/null").output;
        return csv.substr(csv.find('\n') + 1);
    }

    Shell shell;
};

TEST_CASE_FIXTURE(Shop, "Goods below their minimum are listed with what is missing") {
    CHECK(shell.vantlo("low").has("no minimum is set yet"));
    CHECK(shell.vantlo("minimum G1 5").exit_code == 0);
    CHECK(shell.vantlo("minimum G1 3 --warehouse W1").exit_code == 0);
    CHECK(shell.vantlo("minimum G2 2.5").exit_code == 0);
    CHECK(low() == "G1,Screen,,,,0,pc,5,4,1\r\n");
    CHECK(shell.vantlo("low").has(
        "Goods  Goods name  Warehouse  Model 1  Model 2  Status  Unit  Minimum  On hand  Shortage\n"));
    CHECK(low("--all --goods G2") == "G2,Cable,,,,0,m,2.5,2.5,0\r\n");
    CHECK(shell.vantlo("minimum G1 0").exit_code == 0);
    CHECK(low().empty());
}

TEST_CASE_FIXTURE(Shop, "A minimum of goods or a warehouse that nobody knows is refused") {
    CHECK(shell.vantlo("minimum G01 5").exit_code == 5);
    CHECK(shell.vantlo("minimum G01 5").has("there are no goods \"G01\""));
    CHECK(shell.vantlo("minimum G1 5 --warehouse W7").exit_code == 5);
    CHECK(shell.vantlo("minimum G1 many").exit_code == 2);
    CHECK(shell.vantlo("minimum G1 -3").exit_code == 2);
    CHECK(low().empty());
}

TEST_CASE_FIXTURE(Shop, "Minimums are imported like every table, and what a file leaves out is any") {
    shell.file("minimums.csv", "goods,warehouse,minimum\nG1,W1,10\nG2,,2\n");
    CHECK(shell.vantlo("import minimums.csv").exit_code == 0);
    CHECK(low() == "G1,Screen,W1,,,0,pc,10,4,6\r\n");
    shell.file("more.json",
               R"({"minimums": [{"goods": "G2", "minimum": 7}, {"goods": "G1", "warehouse": "W1", "minimum": 0}]})");
    const Finished changed = shell.vantlo("save more.json");
    CHECK(changed.exit_code == 0);
    CHECK_MESSAGE(changed.has("minimums G1 W1"), changed.output);
    CHECK(low() == "G2,Cable,,,,0,m,7,2.5,4.5\r\n");
    shell.file("minimums.csv", "goods,minimum\nG1,5\nG1,6\n");
    CHECK(shell.vantlo("import minimums.csv").has("minimums.csv:3:"));
    shell.file("minimums.csv", "warehouse,minimum\nW1,5\n");
    CHECK(shell.vantlo("import minimums.csv").exit_code == 5);
}

TEST_CASE_FIXTURE(Shop, "A database of an earlier version is told how to keep minimums, and works without") {
    shell.run("sqlite3 vantlo.db 'drop table StockMinimum'");
    for (const char* const command : {"low", "minimum G1 5"}) {
        const Finished refused = shell.vantlo(command);
        CHECK(refused.exit_code == 7);
        CHECK(refused.has("vantlo init makes it"));
    }
    shell.file("bill.json", R"({"goods": [{"id": "G3"}], "bills": [{"kind": "stock-in", "id": "B2", "lines": [
        {"goods": "G1", "quantity": 1, "receiver": "W1"}]}]})");
    CHECK(shell.vantlo("save --dry-run bill.json").exit_code == 0);
    CHECK(shell.vantlo("save bill.json").exit_code == 0);
    CHECK(shell.vantlo("bill stock-in B2").exit_code == 0);
    CHECK(shell.vantlo("init").exit_code == 0);
    CHECK(shell.vantlo("minimum G1 9").exit_code == 0);
    CHECK(low() == "G1,Screen,,,,0,pc,9,5,4\r\n");
    CHECK(shell.vantlo("leave --yes").exit_code == 0);
    CHECK(shell.run("sqlite3 vantlo.db .tables").has("Inventory"));
    CHECK_FALSE(shell.run("sqlite3 vantlo.db .tables").has("StockMinimum"));
}

TEST_CASE_FIXTURE(Shop, "Idle stock is told as far back as the journal goes, and no further") {
    const Finished young = shell.vantlo("idle --days 30");
    CHECK(young.exit_code == 7);
    CHECK(young.has("the journal of movements begins only on 20"));
    CHECK(shell.vantlo("idle --days 0 --format csv").output.starts_with("goods,goods_name,warehouse,"));
    shell.run(
        "sqlite3 vantlo.db \"insert into StockMovement(MovementNo,MovedAt,Action,WID,GId,Model1,Model2,Status,InChange,"
        "OutChange,CurrentChange) values(0,'2020-01-01 00:00:00','update','W9','G9','','',0,0,0,0)\"");
    CHECK(shell.vantlo("idle --days 30").exit_code == 0);
    CHECK(shell.vantlo("idle --days -1").exit_code == 2);
}

}  // namespace
}  // namespace vantlo::test
