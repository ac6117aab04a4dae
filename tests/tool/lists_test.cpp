#include <doctest/doctest.h>

#include <string>

#include "bills/bill_kinds.h"
#include "tests/support/shell.h"
#include "tests/support/transcript.h"

// Lists, stock cards, reports, and bills that people write by hand.

namespace vantlo::test {
namespace {

struct Shop {
    Shop() {
        shell.vantlo("init");
        shell.file("shop.json", R"({
            "warehouses": [{"id": "W1", "name": "Main"}],
            "goods": [{"id": "G1", "name": "Screen", "unit": "pc"}, {"id": "G2", "name": "Cable", "unit": "m"}],
            "units": [{"goods": "G1", "unit": "box", "factor": 10}],
            "bills": [
                {"kind": "stock-in", "id": "B1", "date": "2024-03-05", "lines": [
                    {"goods": "G1", "quantity": 2, "receiver": "W1", "unit": "box"},
                    {"goods": "G2", "quantity": 2.5, "receiver": "W1", "unit": "m"}]},
                {"kind": "stock-out", "id": "B2", "date": "2024-03-07", "lines": [
                    {"goods": "G1", "quantity": 4, "supplier": "W1", "unit": "pc"}]}]})");
        REQUIRE(shell.vantlo("save shop.json").exit_code == 0);
    }

    Shell shell;
};

TEST_CASE_FIXTURE(Shop, "Bills, goods, units and warehouses are listed for people and for programs") {
    CHECK(shell.vantlo("bills").output ==
          "Date        Kind       Bill  Lines  Remarks\n"
          "----------  ---------  ----  -----  -------\n"
          "2024-03-05  stock-in   B1        2\n"
          "2024-03-07  stock-out  B2        1\n");
    CHECK(shell.vantlo("--lang zh bills --id B1").has("2024-03-05  入库单"));
    CHECK(shell.vantlo("bills --goods G2 --format jsonl").output ==
          "{\"date\": \"2024-03-05\", \"kind\": \"stock-in\", \"bill\": \"B1\", \"lines\": 2, \"remarks\": \"\"}\n");
    CHECK(shell.vantlo("goods --text cab --format csv").output ==
          "id,name,class,model,unit,main_goods,remarks\r\nG2,Cable,,,m,0,\r\n");
    CHECK(shell.vantlo("units 'G*' --format jsonl").output ==
          "{\"goods\": \"G1\", \"unit\": \"box\", \"factor\": 10}\n");
    CHECK(shell.vantlo("warehouses W9 --format json").output == "[]\n");
}

TEST_CASE_FIXTURE(Shop, "A list is sorted and cut as asked, and says what it left out") {
    const Finished finished = shell.vantlo("bills --sort -date --limit 1 --format csv");
    CHECK(finished.has("2024-03-07"));
    CHECK_FALSE(finished.has("2024-03-05"));
    CHECK(finished.has("1 row is not shown (--skip 1 goes on)."));
    CHECK(shell.vantlo("bills --skip 1 --format csv").has("B2"));
    CHECK_FALSE(shell.vantlo("bills --skip 9").has("not shown"));
    const Finished unknown = shell.vantlo("bills --sort dat");
    CHECK(unknown.exit_code == 2);
    CHECK(
        unknown.has("there is no column \"dat\"; there are: date, kind, bill, lines, remarks Did you mean \"date\"?"));
    const Finished kind = shell.vantlo("bills --kind stok-in");
    CHECK(kind.exit_code == 2);
    CHECK(kind.has("Did you mean \"stock-in\"?"));
    CHECK(shell.vantlo("bills --from 2024-02-30").exit_code == 2);
}

TEST_CASE_FIXTURE(Shop, "A stock card tells each movement and what made it") {
    shell.run("sqlite3 vantlo.db \"update Inventory set CurrentQty=17 where GId='G1'\"");
    const Finished card = shell.vantlo("card G1");
    CHECK(card.has("W1 Main, G1 Screen, status 0 (pc)\n"));
    CHECK(card.has("opening"));
    CHECK(card.has("  stock-in                   B1       1        20       0       20  vantlo\n"));
    CHECK(card.has("  stock-out                  B2       1         0       4       16  vantlo\n"));
    CHECK(card.has("! without a bill (update)"));
    CHECK(card.has("  closing                                      20       4       17\n"));
    CHECK(shell.vantlo("card G1 --without-bill --format csv").has(",update,"));
    CHECK_FALSE(shell.vantlo("card G1 --without-bill").has("B1"));
    CHECK(shell.vantlo("card G7").has("nothing moved there"));
}

TEST_CASE_FIXTURE(Shop, "A report's totals stand for each unit alone") {
    CHECK(shell.vantlo("report").output ==
          "Warehouse    Name  Unit  Opening  Received  Issued  Adjusted  Closing\n"
          "-----------  ----  ----  -------  --------  ------  --------  -------\n"
          "W1           Main  m           0       2.5       0         0      2.5\n"
          "W1           Main  pc          0        20       4         0       16\n"
          "-----------  ----  ----  -------  --------  ------  --------  -------\n"
          "Total in m                     0       2.5       0         0      2.5\n"
          "Total in pc                    0        20       4         0       16\n");
    const Finished early = shell.vantlo("report --from 2020 --format json");
    CHECK(early.has("the journal of movements begins on "));
    CHECK(shell.vantlo("report --by colour").exit_code == 2);
}

TEST_CASE_FIXTURE(Shop, "The ledger is searched, sorted, cut, grouped, and totalled for each unit alone") {
    const std::string ledger =
        "Warehouse    Goods      Model 1  Model 2  Status  Unit  Received  Issued  On hand\n"
        "-----------  ---------  -------  -------  ------  ----  --------  ------  -------\n"
        "W1 Main      G1 Screen                         0  pc          20       4       16\n"
        "W1 Main      G2 Cable                          0  m          2.5       0      2.5\n"
        "-----------  ---------  -------  -------  ------  ----  --------  ------  -------\n"
        "Total in m                                                   2.5       0      2.5\n"
        "Total in pc                                                   20       4       16\n";
    CHECK(shell.vantlo("ledger").output == ledger);
    CHECK(shell.vantlo("ledger --goods 'G?' --warehouse W1 --warehouse W2").output == ledger);
    CHECK(shell.vantlo("ledger --goods 'G?' --sort on_hand --limit 1 2>/dev/null").has("W1 Main      G2 Cable"));
    CHECK(shell.vantlo("ledger --goods 'G?' --sort on_hand --limit 1").has("1 row is not shown (--skip 1 goes on)"));
    CHECK(shell.vantlo("ledger --group goods --format csv").output ==
          "goods,goods_name,unit,rows,received,issued,on_hand\r\n"
          "G1,Screen,pc,1,20,4,16\r\nG2,Cable,m,1,2.5,0,2.5\r\n");
    CHECK(
        shell.vantlo("ledger --group warehouse,status --format jsonl")
            .has(
                "{\"warehouse\": \"W1\", \"warehouse_name\": \"Main\", \"status\": 0, \"unit\": \"m\", \"rows\": 1, "));
    CHECK(shell.vantlo("ledger --negative").has("Total of 0 rows"));
    CHECK(shell.vantlo("ledger --nonzero --status 0 --status 2 --format csv").output ==
          shell.vantlo("ledger --format csv").output);
    CHECK(shell.vantlo("ledger --sort colour").exit_code == 2);
    CHECK(shell.vantlo("ledger --group colour").exit_code == 2);
    shell.run("sqlite3 vantlo.db \"update Goods set Unit=null\"");
    CHECK(shell.vantlo("ledger").has("Total of 2 rows"));
    shell.run("sqlite3 vantlo.db \"update Goods set Unit='m' where ID='G2'\"");
    const Finished partly = shell.vantlo("ledger");
    CHECK(partly.has("Total in m "));
    CHECK(partly.has("1 row without a unit\n"));
}

TEST_CASE_FIXTURE(Shop, "The ledger of a past day comes from the journal, and of today is the ledger") {
    CHECK(shell.vantlo("ledger --as-of 2099").output == shell.vantlo("ledger").output);
    const Finished early = shell.vantlo("ledger --as-of 2024-03-31");
    CHECK(early.exit_code == 7);
    CHECK(early.has("the journal of movements begins on 20"));
    CHECK(shell.vantlo("ledger --as-of March").exit_code == 2);
    shell.vantlo("init --no-journal --db other.db");
    CHECK(shell.vantlo("--db other.db ledger --as-of 2024").exit_code == 7);
    CHECK(shell.vantlo("--db other.db ledger --as-of 2099").exit_code == 0);
}

TEST_CASE_FIXTURE(Shop, "A bill is found by its id alone, unless several have it") {
    CHECK(shell.vantlo("bill B1").output == shell.vantlo("bill stock-in B1").output);
    CHECK(shell.vantlo("bill B9").exit_code == 8);
    CHECK(shell.vantlo("bill B9").has("there is no bill with the id \"B9\""));
    shell.file("more.json", R"({"bills": [{"kind": "borrow-out", "id": "B1", "lines": [
        {"goods": "G1", "quantity": 1, "supplier": "W1"}]}]})");
    CHECK(shell.vantlo("save more.json").exit_code == 0);
    const Finished two = shell.vantlo("bill B1");
    CHECK(two.exit_code == 5);
    CHECK(two.has("say of which kind: "));
    CHECK(two.has("borrow-out"));
}

TEST_CASE("Where no journal is kept, cards and reports say how one is begun") {
    const Shell shell;
    shell.vantlo("init --no-journal");
    for (const char* const command : {"report", "card G1"}) {
        const Finished finished = shell.vantlo(command);
        CHECK(finished.exit_code == 7);
        CHECK(finished.has("vantlo journal on"));
    }
}

/// The skeleton with every empty text and every 0 filled in.
std::string filled(std::string skeleton, const std::string& id) {
    const auto replace = [&](const std::string& from, const std::string& to) {
        for (std::size_t at = 0; (at = skeleton.find(from, at)) != std::string::npos; at += to.size())
            skeleton.replace(at, from.size(), to);
    };
    replace("\"id\": \"\"", "\"id\": \"" + id + "\"");
    replace("\"quantity\": 0", "\"quantity\": 1");
    replace("\"goods\": \"\"", "\"goods\": \"G1\"");
    for (const char* const field : {"receiver", "supplier", "warehouse", "status_warehouse"})
        replace(std::string("\"") + field + "\": \"\"", std::string("\"") + field + "\": \"W1\"");
    return skeleton;
}

TEST_CASE_FIXTURE(Shop, "The skeleton of every kind of bill is saved once it is filled in, and refused before") {
    for (const BillKind& kind : bill_kinds()) {
        const std::string name(kind.name);
        INFO(name);
        shell.file("bill.json", shell.vantlo("new " + name).output);
        CHECK(shell.vantlo("save bill.json").exit_code == 5);
        shell.file("bill.json", filled(shell.vantlo("new " + name).output, "N-" + name));
        CHECK(shell.vantlo("save bill.json").exit_code == 0);
        CHECK(shell.vantlo("fields " + name).has("needed: a warehouse's id"));
    }
    const Finished csv = shell.vantlo("new loss --format csv");
    CHECK(csv.output.starts_with("bill.kind,bill.id,bill.date,"));
    CHECK(csv.has("\r\nloss,,20"));
    CHECK(shell.vantlo("new gift").exit_code == 2);
}

TEST_CASE("The page of questions answers each of its questions with a command that works on the sample shop") {
    const Shell shell;
    const std::string shop = VANTLO_SOURCE_DIR "/examples/shop/";
    REQUIRE(shell
                .run("'" + shell.program() + "' init && for f in master week1 week2 week3 week4; do '" +
                     shell.program() + "' save '" + shop + "'$f.json || exit; done")
                .exit_code == 0);
    shell.file("bills.json", filled(shell.vantlo("new stock-in").output, "N1"));
    std::istringstream page(text_of(VANTLO_SOURCE_DIR "/docs/questions.md"));
    int questions = 0;
    for (std::string line; std::getline(page, line);) {
        const std::size_t command = line.find("| `vantlo ");
        if (!line.starts_with("| ") || command == std::string::npos) continue;
        const std::size_t from = command + std::string("| `vantlo ").size();
        const std::string arguments = line.substr(from, line.find('`', from) - from);
        INFO(arguments);
        const Finished finished = shell.vantlo(arguments);
        CHECK(finished.exit_code == 0);
        CHECK_FALSE(finished.output.empty());
        ++questions;
    }
    CHECK(questions >= 40);
}

}  // namespace
}  // namespace vantlo::test
