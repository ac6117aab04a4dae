#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "support/workbook_file.h"
#include "tests/support/shell.h"

// The sample shop, written in other formats and imported, has the ledger that its own files give.

namespace vantlo::test {
namespace {

using nlohmann::ordered_json;

ordered_json sample(const char* name) {
    return ordered_json::parse(std::ifstream(std::string(VANTLO_SOURCE_DIR "/examples/shop/") + name));
}

std::vector<ordered_json> sample_files() {
    return {sample("master.json"), sample("week1.json"), sample("week2.json"), sample("week3.json"),
            sample("week4.json")};
}

std::string quoted(const ordered_json& value) {
    if (value.is_null()) return "";
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    std::string cell = "\"";
    for (const char character : text) cell += character == '"' ? std::string("\"\"") : std::string(1, character);
    return cell + "\"";
}

std::string csv_row(const std::vector<std::string>& cells) {
    std::string row;
    for (const std::string& cell : cells) row += cell + ",";
    row.back() = '\r';
    return row + "\n";
}

/// A table with a column for every field that any row has.
std::string csv_of(const std::vector<ordered_json>& rows) {
    std::set<std::string> columns;
    for (const ordered_json& row : rows) {
        for (const auto& [field, value] : row.items()) columns.insert(field);
    }
    std::string text = csv_row({columns.begin(), columns.end()});
    for (const ordered_json& row : rows) {
        std::vector<std::string> cells;
        for (const std::string& column : columns) cells.push_back(row.contains(column) ? quoted(row[column]) : "");
        text += csv_row(cells);
    }
    return text;
}

/// The lines of a file's bills, each with its bill's own fields.
std::vector<ordered_json> bill_rows(const ordered_json& file) {
    std::vector<ordered_json> rows;
    for (const ordered_json& bill : file["bills"]) {
        for (const ordered_json& line : bill["lines"]) {
            ordered_json row = line;
            for (const auto& [field, value] : bill.items()) {
                if (field != "lines") row["bill." + field] = value;
            }
            rows.push_back(row);
        }
    }
    return rows;
}

/// What save and import must agree on: the ledger, and every stored row.
std::string all_rows(const Shell& shell, const std::string& database) {
    std::string text;
    for (const char* table : {"Inventory", "Warehouse", "Goods", "StockBill", "StockBillItems", "RGstockBill",
                              "RGstockBillItems", "GBorrow", "GBorrowItems", "GoodsBill", "GoodsBillItems"}) {
        const Finished rows = shell.run("sqlite3 " + database + " 'select * from " + table + " order by 1,2'");
        CHECK(rows.exit_code == 0);
        CHECK(!rows.output.empty());
        text += rows.output;
    }
    return text;
}

std::string rows_as_saved(const Shell& shell) {
    shell.vantlo("--db saved.db init");
    const std::string shop = VANTLO_SOURCE_DIR "/examples/shop/";
    const Finished saved = shell.vantlo("--db saved.db save " + shop + "master.json " + shop + "week*.json");
    REQUIRE_MESSAGE(saved.exit_code == 0, saved.output);
    return all_rows(shell, "saved.db");
}

void check_imported(const Shell& shell, const std::string& arguments) {
    shell.vantlo("--db imported.db init");
    const Finished imported = shell.vantlo("--db imported.db import " + arguments);
    REQUIRE_MESSAGE(imported.exit_code == 0, imported.output);
    CHECK(all_rows(shell, "imported.db") == rows_as_saved(shell));
    CHECK(shell.vantlo("--db imported.db verify").exit_code == shell.vantlo("--db saved.db verify").exit_code);
}

std::string write_csv(const Shell& shell) {
    std::string names;
    for (const char* table : {"warehouses", "goods", "units"}) {
        const std::vector<ordered_json> rows = sample("master.json")[table];
        names += shell.file(std::string(table) + ".csv", "\xEF\xBB\xBF" + csv_of(rows)) + " ";
    }
    for (const char* week : {"week1", "week2", "week3", "week4"}) {
        const std::vector<ordered_json> rows = bill_rows(sample((std::string(week) + ".json").c_str()));
        names += shell.file(std::string(week) + ".csv", csv_of(rows)) + " ";
    }
    return names;
}

TEST_CASE("vantlo import makes the sample shop's ledger from JSON") {
    const Shell shell;
    const std::string shop = VANTLO_SOURCE_DIR "/examples/shop/";
    check_imported(shell, shop + "master.json " + shop + "week*.json");
}

TEST_CASE("vantlo import makes the sample shop's ledger from JSON Lines") {
    const Shell shell;
    std::string lines;
    for (const ordered_json& file : sample_files()) {
        for (const auto& [part, rows] : file.items()) {
            for (ordered_json row : rows) {
                if (part != "bills") row["table"] = part;
                lines += row.dump() + "\n";
            }
        }
    }
    check_imported(shell, shell.file("shop.jsonl", lines));
}

TEST_CASE("vantlo import makes the sample shop's ledger from CSV") {
    const Shell shell;
    check_imported(shell, write_csv(shell));
}

TEST_CASE("vantlo import makes the sample shop's ledger from CSV in GB18030") {
    const Shell shell;
    const std::string names = write_csv(shell);
    const Finished converted = shell.run("for file in " + names +
                                         "; do iconv -f UTF-8 -t GB18030 \"$file\" >\"$file.gb\" && "
                                         "mv \"$file.gb\" \"$file\" || exit 1; done");
    REQUIRE_MESSAGE(converted.exit_code == 0, converted.output);
    const Finished unsaid = shell.vantlo("import --dry-run --encoding utf-8 goods.csv");
    CHECK(unsaid.exit_code == 5);
    CHECK(unsaid.has("is no UTF-8; for a file in GB18030, say --encoding gb18030"));
    check_imported(shell, "--encoding gb18030 " + names);
}

TEST_CASE("vantlo import reads standard input, and is told what it is") {
    const Shell shell;
    shell.vantlo("init");
    shell.file("rows", "id;name\nG1;屏幕\n");
    const Finished unsaid = shell.run(Shell::program() + " import -" + " <rows");
    CHECK(unsaid.exit_code == 5);
    CHECK(unsaid.output == "-: say with --format what standard input is: csv, json, jsonl or xlsx\n");
    const Finished read = shell.run(Shell::program() + " import --format csv --table goods -" + " <rows");
    CHECK(read.exit_code == 0);
    CHECK(read.output ==
          "-: detected: values between semicolons\n"
          "Imported 1 row of master data and 0 bills with 0 lines; 0 bills were there already.\n");
    CHECK(shell.vantlo("goods").has("屏幕"));
}

TEST_CASE("vantlo import knows a bill again in whatever format it comes") {
    const Shell shell;
    shell.vantlo("init");
    shell.file(
        "a.csv",
        "bill.kind,bill.id,bill.date,goods,unit,quantity,receiver\nstock-in,R1,2024-03-05 14:07:09,G1,箱,1234.5,W1\n");
    CHECK(shell.vantlo("import a.csv").has("and 1 bill with 1 line; 0 bills were there already.\n"));
    shell.file("b.csv",
               "bill.kind;bill.id;bill.date;goods;unit;quantity;receiver;\n"
               "stock-in;R1;5.3.2024 14:07:09;G1;箱;1.234,5;W1;\n;;;;;;;\n");
    shell.file("c.TSV",
               "bill.kind\tbill.id\tbill.date\tgoods\tunit\tquantity\treceiver\n"
               "stock-in\tR1\t2024年3月5日 下午2:07:09\tG1\t箱\t１，２３４．５\tW1\n");
    const auto text = [](const std::string& value) { return "<c t=\"inlineStr\"><is><t>" + value + "</t></is></c>"; };
    std::string head, row = text("stock-in") + text("R1") + "<c s=\"2\"><v>45356.5882986111</v></c>" + text("G1") +
                            text("箱") + "<c><v>1234.5</v></c>" + text("W1");
    for (const char* const name : {"bill.kind", "bill.id", "bill.date", "goods", "unit", "quantity", "receiver"}) {
        head += text(name);
    }
    shell.file("d.xlsx", workbook_of({{"Bills", "<row>" + head + "</row><row>" + row + "</row>", "", ""}}));
    for (const char* const name : {"b.csv", "c.TSV", "d.xlsx"}) {
        CAPTURE(name);
        const Finished again = shell.vantlo(std::string("import ") + name);
        CHECK(again.exit_code == 0);
        CHECK(again.has("and 0 bills with 0 lines; 1 bill was there already.\n"));
    }
    CHECK(shell.vantlo("import d.xlsx --sheet Other").output ==
          "d.xlsx: there is no sheet \"Other\"; there are Bills\n");
}

}  // namespace
}  // namespace vantlo::test
