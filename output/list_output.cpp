#include "output/list_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <span>

#include "automation/calendar.h"
#include "automation/number_text.h"
#include "bills/bill_kinds.h"
#include "output/table_output.h"
#include "output/words.h"

namespace vantlo {

namespace {

struct Title {
    std::string_view column;
    Message title;
};

// clang-format off
constexpr Title titles[] = {
    {"date",           {"日期", "Date"}},
    {"time",           {"时间", "Time"}},
    {"kind",           {"种类", "Kind"}},
    {"bill",           {"单据", "Bill"}},
    {"lines",          {"行数", "Lines"}},
    {"line",           {"行", "Line"}},
    {"member",         {"成员", "Member"}},
    {"part",           {"部分", "Part"}},
    {"field",          {"字段", "Field"}},
    {"type",           {"类型", "Type"}},
    {"need",           {"要求", "Need"}},
    {"remarks",        {"备注", "Remarks"}},
    {"id",             {"编号", "Id"}},
    {"name",           {"名称", "Name"}},
    {"class",          {"类别", "Class"}},
    {"model",          {"型号", "Model"}},
    {"unit",           {"单位", "Unit"}},
    {"main_goods",     {"主机标志", "Main goods"}},
    {"factor",         {"换算系数", "Factor"}},
    {"warehouse",      words::warehouse},
    {"warehouse_name", {"仓库名称", "Warehouse name"}},
    {"goods",          words::goods},
    {"goods_name",     {"商品名称", "Goods name"}},
    {"model1",         words::model1},
    {"model2",         words::model2},
    {"status",         words::status},
    {"receiver",       {"收入仓库", "Receiver"}},
    {"supplier",       {"发出仓库", "Supplier"}},
    {"status_warehouse", {"状态仓库", "Status warehouse"}},
    {"quantity",       words::quantity},
    {"entry",          {"事项", "Entry"}},
    {"program",        {"程序", "Program"}},
    {"user",           {"用户", "User"}},
    {"by",             {"经手", "By"}},
    {"day",            {"日期", "Day"}},
    {"month",          {"月份", "Month"}},
    {"opening",        {"期初", "Opening"}},
    {"received",       words::received},
    {"issued",         words::issued},
    {"adjusted",       {"调整", "Adjusted"}},
    {"closing",        {"期末", "Closing"}},
    {"balance",        {"结存", "Balance"}},
    {"on_hand",        words::on_hand},
    {"minimum",        {"最低库存", "Minimum"}},
    {"shortage",       {"缺", "Shortage"}},
    {"last_moved",     {"最近变动", "Last moved"}},
    {"sheet",          {"盘点表", "Sheet"}},
    {"expected",       {"账面", "Expected"}},
    {"counted",        {"实盘", "Counted"}},
    {"difference",     {"差异", "Difference"}},
    {"moved_since",    {"此后变动", "Moved since"}},
    {"base_unit",      {"基本单位", "Base unit"}},
    {"rows",           {"行数", "Rows"}},
};

constexpr Message sum_of_rows      = {"合计 {} 行", "Total of {:row|rows}"};
constexpr Message sum_in_unit      = {"合计（{}）", "Total in {}"};
constexpr Message rows_without_unit = {"{} 行无单位，未合计", "{:row|rows} without a unit"};
// clang-format on

std::string json_of(const Variant& cell, CellType type) {
    if (cell.is<Null>() || cell.is<Empty>()) return "null";
    const std::string text = cell_text(cell);
    const bool is_number = !cell.is<Text>() && (type == CellType::number || type == CellType::quantity);
    return is_number ? text : nlohmann::json(text).dump();
}

using Row = std::vector<Variant>;

std::span<const Row> shown_rows(const Listing& list, ShownRows shown) {
    const std::size_t first = std::min(shown.first, list.rows.size());
    return std::span(list.rows).subspan(first, std::min(shown.count, list.rows.size() - first));
}

std::string json_object(const Listing& list, const Row& row) {
    std::string object;
    for (std::size_t i = 0; i < row.size(); ++i) {
        object += i == 0 ? "{" : ", ";
        object += nlohmann::json(list.columns[i].name).dump() + ": " + json_of(row[i], list.columns[i].type);
    }
    return object + "}";
}

std::string json_text(const Listing& list, std::span<const Row> rows) {
    std::string text;
    for (const Row& row : rows) text += (text.empty() ? "[\n  " : ",\n  ") + json_object(list, row);
    return text.empty() ? "[]\n" : text + "\n]\n";
}

std::string json_lines(const Listing& list, std::span<const Row> rows) {
    std::string text;
    for (const Row& row : rows) text += json_object(list, row) + "\n";
    return text;
}

std::string csv_text(const Listing& list, std::span<const Row> rows, CsvCells cells) {
    std::string text;
    for (std::size_t i = 0; i < list.columns.size(); ++i)
        text += (i == 0 ? "" : ",") + std::string(list.columns[i].name);
    text += "\r\n";
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) text += (i == 0 ? "" : ",") + csv_field(cell_text(row[i]), cells);
        text += "\r\n";
    }
    return text;
}

/// The sums of the columns in one unit, and of how many rows. Rows of which nobody said the unit are together here.
struct UnitSums {
    std::string unit;         ///< as the first row spells it
    bool has_others = false;  ///< as when nobody said the units of several goods
    std::size_t rows = 0;
    std::vector<std::int64_t> sums;
};

void add_sums(TableOutput& table, const Listing& list, Language language, const std::vector<std::string_view>& summed) {
    const std::optional<std::size_t> unit_column = list.find("unit");
    std::map<std::string, UnitSums> by_unit;
    if (list.rows.empty()) by_unit[""].sums.resize(list.columns.size());
    for (const auto& row : list.rows) {
        const std::string spelled = unit_column ? cell_text(row[*unit_column]) : "";
        UnitSums& unit = by_unit[spelled.starts_with("? ") ? "" : spelled];
        if (unit.rows == 0) unit.unit = spelled;
        unit.has_others = unit.has_others || unit.unit != spelled;
        unit.sums.resize(row.size());
        ++unit.rows;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (const Currency* const quantity = row[i].get_if<Currency>()) unit.sums[i] += quantity->ten_thousandths();
        }
    }
    for (const auto& [unit, sums] : by_unit) {
        // Quantities without a unit may be metres and boxes.
        const bool is_added = !sums.has_others && (by_unit.size() == 1 || !unit.empty());
        std::vector<std::string> cells(list.columns.size());
        cells[0] = !is_added             ? say(language, rows_without_unit, Count(sums.rows))
                   : by_unit.size() == 1 ? say(language, sum_of_rows, Count(sums.rows))
                                         : say(language, sum_in_unit, unit);
        for (std::size_t i = 1; is_added && i < cells.size(); ++i) {
            if (std::ranges::count(summed, list.columns[i].name) > 0)
                cells[i] = to_utf8(number_text(Currency::from_ten_thousandths(sums.sums[i])));
        }
        table.add_totals(std::move(cells));
    }
}

std::string table_text(const Listing& list, std::span<const Row> rows, Language language, bool has_colour,
                       const std::vector<std::string_view>& summed) {
    std::vector<TableOutput::Column> columns;
    for (const ListColumn& column : list.columns) {
        const bool is_right = column.type == CellType::number || column.type == CellType::quantity;
        columns.push_back(
            {title_of(column.name, language), is_right ? TableOutput::Align::right : TableOutput::Align::left});
    }
    TableOutput table(std::move(columns), has_colour);
    const std::optional<std::size_t> kind_column = list.find("kind");
    for (const Row& row : rows) {
        std::vector<std::string> cells;
        std::ranges::transform(row, std::back_inserter(cells), cell_text);
        if (kind_column) cells[*kind_column] = kind_for_people(cells[*kind_column], language);
        table.add_row(std::move(cells));
    }
    if (!summed.empty()) add_sums(table, list, language, summed);
    return table.text();
}

}  // namespace

std::string list_text(const Listing& list, ShownRows shown, const ListFormat& format, Language language,
                      bool has_colour, const std::vector<std::string_view>& summed) {
    const std::span<const Row> rows = shown_rows(list, shown);
    if (format.name == "json") return json_text(list, rows);
    if (format.name == "jsonl") return json_lines(list, rows);
    if (format.name == "csv") return csv_text(list, rows, format.cells);
    return table_text(list, rows, language, has_colour, summed);
}

std::string title_of(std::string_view column, Language language) {
    const Title* const found = std::ranges::find(titles, column, &Title::column);
    return found == std::end(titles) ? std::string(column) : found->title.in(language);
}

std::string kind_for_people(const std::string& name, Language language) {
    const BillKind* const kind = find_bill_kind(name);
    return kind == nullptr || language == Language::english ? name : std::string(kind->chinese_name);
}

std::string cell_text(const Variant& cell) {
    if (cell.is<Null>() || cell.is<Empty>()) return "";
    if (const Date* const date = cell.get_if<Date>()) return to_utf8(ordinary_text(*date));
    return to_utf8(to_text(cell));
}

}  // namespace vantlo
