#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

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
    CHECK(shell.vantlo("import goods.csv").exit_code == 5);
    check_imported(shell, "--encoding gb18030 " + names);
}

}  // namespace
}  // namespace vantlo::test
