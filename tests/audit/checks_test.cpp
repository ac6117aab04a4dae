#include "audit/checks.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <optional>
#include <set>

#include "audit/unconverted_columns.h"
#include "tests/audit/spoilings.h"

namespace vantlo::test {
namespace {

using namespace vantlo;

std::vector<Note> notes_on(NativeConnection& database) { return notes_of(verify(database, Language::english)); }

bool has(const std::vector<Note>& notes, Remark remark, const std::string& part) {
    return std::ranges::any_of(
        notes, [&](const Note& note) { return note.remark == remark && note.subject.find(part) != std::string::npos; });
}

TEST_CASE("unconverted_columns are those whose values the members write as they read them") {
    const auto is_unconverted = [](const std::string& table, const std::string& column) {
        return std::ranges::any_of(unconverted_columns(), [&](const ColumnName& name) {
            return to_utf8(name.table) == table && to_utf8(name.column) == column;
        });
    };
    // Of the columns that hold numbers. AddInventory_Db converts all texts, but reads no stored bill.
    const std::set<std::string> expected = {
        "StockBillItems.Qty",   "StockBillItems.Goodstutas", "GBorrowItems.Goodstutas",   "GoodsBill.Actualqty",
        "GoodsBill.Goodstutas", "GoodsBillItems.Actualqty",  "GoodsBillItems.Goodstutas",
    };
    std::set<std::string> found;
    for (const BillKind& kind : bill_kinds()) {
        for (const BillTable* const table : {kind.header, kind.lines}) {
            for (const BillColumn& column : table->columns) {
                const std::string name = to_utf8(table->name) + "." + to_utf8(column.column);
                const bool is_number = column.type == ColumnType::single || column.type == ColumnType::whole_number;
                if (is_number && is_unconverted(to_utf8(table->name), to_utf8(column.column))) found.insert(name);
            }
        }
    }
    CHECK(found == expected);
    CHECK(is_unconverted("StockBillItems", "Gid"));
    CHECK(is_unconverted("RGstockBill", "Receiver"));
    CHECK(!is_unconverted("StockBill", "Remarks"));
    CHECK(!is_unconverted("RGstockBillItems", "WID"));
}

TEST_CASE("Columns on which statements fail or lose something are told") {
    struct Row {
        const char* column;
        const char* type;
        const char* characters;
        std::optional<Remark> remark;
    };
    constexpr auto nothing = std::nullopt;
    // clang-format off
    const Row rows[] = {
        {"Actualqty",  "decimal(19,4)", "", Remark::empty_literal},
        {"Actualqty",  "NUMERIC",       "", Remark::empty_literal},
        {"Actualqty",  "real",          "", nothing},
        {"Actualqty",  "money",         "", nothing},
        {"Goodstutas", "bigint",        "", Remark::empty_literal},
        {"Goodstutas", "int",           "", nothing},
        {"InQty",      "decimal(19,4)", "", nothing},
        {"InQty",      "decimal(19,6)", "", nothing},
        {"InQty",      "money",         "", nothing},
        {"OutQty",     "decimal(10,2)", "", Remark::loses_digits},
        {"OutQty",     "decimal(10)",   "", Remark::loses_digits},
        {"CurrentQty", "double precision", "", Remark::loses_digits},
        {"CurrentQty", "int",           "", Remark::loses_digits},
        {"Model1",     "varchar",       "latin1", Remark::loses_characters},
        {"Model1",     "varchar",       "SQL_Latin1_General_CP1_CI_AS", Remark::loses_characters},
        {"Model1",     "varchar",       "SQL_ASCII", Remark::loses_characters},
        {"Model1",     "varchar",       "Chinese_PRC_CI_AS", nothing},
        {"Model1",     "varchar",       "Latin1_General_100_CI_AS_SC_UTF8", nothing},
        {"Model1",     "varchar",       "utf8mb4", nothing},
        {"Model1",     "varchar",       "UTF8", nothing},
        {"Model1",     "varchar",       "gbk", nothing},
        {"Model1",     "varchar",       "", nothing},
    };
    // clang-format on
    for (const Row& row : rows) {
        const std::string column = row.column;
        const std::string table = column == "Actualqty" || column == "Goodstutas" ? "GoodsBillItems" : "Inventory";
        INFO(column, " ", row.type, " ", row.characters);
        const ColumnDescription description{table, column, row.type, row.characters};
        const std::vector<Note> notes = column_notes({&description, 1});
        REQUIRE(notes.size() == (row.remark ? 1 : 0));
        if (row.remark) CHECK(notes.front().remark == *row.remark);
    }
    const ColumnDescription foreign{"Payroll", "InQty", "int", "latin1"};
    CHECK(column_notes({&foreign, 1}).empty());
}

TEST_CASE("The tables of this system keep all that is written into them") {
    const auto database = empty_shop_in_memory();
    CHECK(read_columns(*database).size() > 100);
    CHECK(column_notes(read_columns(*database)).empty());
    database->run(u"alter table GoodsBill drop column Actualqty");
    database->run(u"alter table GoodsBill add column Actualqty decimal(12,2)");
    CHECK(has(column_notes(read_columns(*database)), Remark::empty_literal, "GoodsBill.Actualqty decimal(12,2)"));
}

TEST_CASE("verify notes what the bills themselves bring about") {
    const auto database = sample_shop_in_memory();
    CHECK(has(notes_on(*database), Remark::negative_by_bills, "WID='W03' and GId='G009'"));
    CHECK(!has(notes_on(*database), Remark::unbalanced_by_design, ""));

    Bookkeeping bookkeeping([&] { return database; });
    const ResultTable disassembly = database->run(u"select Id,Gid from GoodsBill where Kind='disassembly'");
    bookkeeping.reverse(*find_bill_kind("disassembly"), to_text(disassembly.rows.at(0).at(0)));
    bookkeeping.save(stock_bill(u"WIDE", u"Ｇ００１", 1, u"W01", u"W02"));
    bookkeeping.save(stock_bill(u"NARROW", u"G001", 1, u"W01", u"W02"));
    bookkeeping.save(stock_bill(u"LOST", u"G001", 1, u"W01", u"W02"));
    database->run(u"delete from StockBill where Id='LOST'");
    database->run(u"insert into StockBill(Id,Kind) values('GIFT','gift')");
    const std::vector<Note> notes = notes_on(*database);
    CHECK(has(notes, Remark::unbalanced_by_design, to_utf8(to_text(disassembly.rows[0][1]))));
    CHECK(has(notes, Remark::keys_look_alike, "GId='Ｇ００１'"));
    CHECK(has(notes, Remark::lost_bill, "stock LOST"));
    CHECK(has(notes, Remark::headless_lines, "StockBillItems LOST"));
    CHECK(has(notes, Remark::unknown_kind, "gift GIFT"));
    CHECK(std::ranges::is_sorted(notes, {}, &Note::remark));
}

}  // namespace
}  // namespace vantlo::test
