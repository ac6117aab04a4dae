#include "import/table_records.h"

#include <algorithm>

#include "import/cell_values.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message no_table_named = {
    "应有“bill.kind”和“bill.id”两列，或文件以其数据表命名（warehouses、goods、units），或使用 --table；没有数据表“{}”",
    "columns \"bill.kind\" and \"bill.id\" are expected, or a file named after its table (warehouses, goods, units), or --table; \"{}\" is no table"};
constexpr Message unknown_column = {"没有“{}”这一列", "unknown column \"{}\""};
constexpr Message column_twice   = {"“{}”列出现了两次", "the column \"{}\" is given twice"};
constexpr Message column_missing = {"缺少“{}”列", "the column \"{}\" is missing"};
constexpr Message values_of_row  = {"此行有 {} 个值，但共有 {} 列", "the row has {:value|values} for {:column|columns}"};
constexpr Message no_heading     = {"此列没有标题，却有值“{}”", "a value in a column without a heading: \"{}\""};
constexpr Message covered_cell   = {"{}：合并的单元格只有第一格有值；请取消合并并逐格填写", "{}: of merged cells only the first has a value; unmerge them and fill in each"};
constexpr Message row_of_totals  = {"“{}”：像是合计行；请去掉，或写明单据编号", "\"{}\": this looks like a row of totals; leave it out, or give its bill's id"};
constexpr Message differs_in_bill = {"bill.{}：“{}”与单据第一行的“{}”不同", "bill.{}: \"{}\" differs from \"{}\" in the bill's first row"};
// clang-format on

}  // namespace words

namespace {

constexpr std::string_view bill_prefix = "bill.";

/// A column of the file and the field that it fills.
struct Column {
    std::string field;
    bool is_of_bill = false;
    bool is_known = true;
    bool has_heading = true;
};

bool has_field(std::span<const BillColumn> columns, std::string_view field) {
    return std::ranges::find(columns, field, &BillColumn::field) != columns.end();
}

/// Whether the bills of any kind have the field.
bool is_known_to_bills(const Column& column) {
    if (column.is_of_bill && (column.field == "kind" || column.field == "id")) return true;
    return std::ranges::any_of(bill_kinds(), [&](const BillKind& kind) {
        return has_field((column.is_of_bill ? kind.header : kind.lines)->columns, column.field);
    });
}

/// The value of a cell without the blanks around it.
std::string_view trimmed(const TableCell& cell) { return without_blanks(cell.text); }

/// What spreadsheets write beside a sum.
constexpr std::string_view words_of_totals[] = {"合计",   "总计",        "小计",     "总和", "total",
                                                "totals", "grand total", "subtotal", "sum"};

class TableRecords {
public:
    TableRecords(const SourceText& source, const NextRow& next, const std::string& table, InputErrors& errors,
                 const TakeRecord& take)
        : source_(source), next_(next), table_name_(table), errors_(errors), take_(take) {}

    void read() {
        std::optional<TableRow> header = next_row();
        if (!header) return;
        for (TableCell& heading : header->cells) heading.text = trimmed(heading);
        const bool is_bills = is_header_of_bills(*header);
        if (!is_bills && !find_table(*header)) return;
        if (!read_header(*header, is_bills)) return;
        while (std::optional<TableRow> row = next_row()) {
            if (!is_complete(*row)) continue;
            if (is_bills) {
                add_to_bill(*row);
            } else {
                take_(table_, cells_of(*row, false));
            }
        }
        finish_bill();
    }

private:
    /// The next row that has a value.
    std::optional<TableRow> next_row() {
        std::optional<TableRow> row = next_();
        while (row && is_blank_row(*row)) row = next_();
        return row;
    }

    bool find_table(const TableRow& header) {
        table_ = find_master_table(table_name_);
        if (table_ != nullptr) return true;
        errors_.add(source_, header.offset, words::no_table_named, table_name_);
        return false;
    }

    /// Returns false if the rows cannot be told apart by it.
    bool read_header(const TableRow& header, bool is_bills) {
        for (const TableCell& cell : header.cells) {
            Column column{cell.text, is_bills && cell.text.starts_with(bill_prefix)};
            if (column.is_of_bill) column.field.erase(0, bill_prefix.size());
            column.is_known = is_bills ? is_known_to_bills(column) : has_field(table_->columns, column.field);
            column.has_heading = !column.field.empty();
            if (!column.has_heading && !column.is_of_bill) {  // it may have no values
                column.is_known = false;
                columns_.push_back(std::move(column));
                continue;
            }
            if (!column.is_known) errors_.add(source_, cell.offset, words::unknown_column, cell.text);
            if (find(column.field, column.is_of_bill)) {
                errors_.add(source_, cell.offset, words::column_twice, cell.text);
            }
            columns_.push_back(std::move(column));
        }
        return is_bills ? needs(header, {"bill.kind", "bill.id", "goods", "quantity"})
                        : needs_keys(header, table_->columns.first(table_->needed));
    }

    bool needs(const TableRow& header, std::initializer_list<std::string_view> names) {
        bool has_all = true;
        for (const std::string_view name : names) {
            if (std::ranges::find(header.cells, name, &TableCell::text) != header.cells.end()) continue;
            errors_.add(source_, header.offset, words::column_missing, name);
            has_all = false;
        }
        return has_all;
    }

    bool needs_keys(const TableRow& header, std::span<const BillColumn> keys) {
        bool has_all = true;
        for (const BillColumn& key : keys) has_all = needs(header, {key.field}) && has_all;
        return has_all;
    }

    [[nodiscard]] std::optional<std::size_t> find(std::string_view field, bool is_of_bill) const {
        for (std::size_t index = 0; index < columns_.size(); ++index) {
            if (columns_[index].field == field && columns_[index].is_of_bill == is_of_bill) return index;
        }
        return std::nullopt;
    }

    /// Brings the row to as many cells as there are columns; returns false if it has values where there is none.
    bool is_complete(TableRow& row) {
        while (row.cells.size() > columns_.size() && trimmed(row.cells.back()).empty()) row.cells.pop_back();
        if (row.cells.size() < columns_.size() && source_.sheet_name()) {  // a sheet leaves its last cells out
            row.cells.resize(columns_.size(), TableCell{{}, row.offset});
        }
        if (row.cells.size() != columns_.size()) {
            const bool is_short = row.cells.size() < columns_.size();
            errors_.add(source_, is_short ? row.offset : row.cells[columns_.size()].offset, words::values_of_row,
                        Count(row.cells.size()), Count(columns_.size()));
            return false;
        }
        bool is_complete = true;
        for (std::size_t index = 0; index < columns_.size(); ++index) {
            const TableCell& cell = row.cells[index];
            if (!columns_[index].has_heading && !trimmed(cell).empty()) {
                errors_.add(source_, cell.offset, words::no_heading, cell.text);
                is_complete = false;
            }
            if (cell.is_covered && columns_[index].is_known && !columns_[index].is_of_bill) {
                errors_.add(source_, cell.offset, words::covered_cell, columns_[index].field);
                is_complete = false;
            }
        }
        return is_complete;
    }

    /// The row's values of the bill, or of its line, that are not empty.
    InputValue cells_of(const TableRow& row, bool is_of_bill) const {
        InputValue object{InputValue::Kind::object, row.offset, {}, {}, 0};
        for (std::size_t index = 0; index < columns_.size(); ++index) {
            const Column& column = columns_[index];
            const TableCell& cell = row.cells[index];
            if (column.is_of_bill != is_of_bill || !column.is_known || cell.text.empty()) continue;
            object.children.push_back({cell.kind, cell.offset, cell.text, column.field, cell.offset});
        }
        return object;
    }

    void add_to_bill(const TableRow& row) {
        const bool continues = bill_row_ && is_without_bill(row);
        if (continues && is_row_of_totals(row)) return;
        if (bill_row_ && !continues && (is_other(row, "kind") || is_other(row, "id"))) finish_bill();
        if (bill_row_) {
            if (!continues) tell_differences(row);
        } else {
            bill_row_ = row;
            lines_ = {InputValue::Kind::list, row.offset, {}, "lines", row.offset};
        }
        InputValue line = cells_of(row, false);
        if (!line.children.empty()) lines_.children.push_back(std::move(line));
    }

    /// Whether the row leaves all that is the bill's to the row before.
    [[nodiscard]] bool is_without_bill(const TableRow& row) const {
        for (std::size_t index = 0; index < columns_.size(); ++index) {
            if (columns_[index].is_of_bill && !trimmed(row.cells[index]).empty()) return false;
        }
        return true;
    }

    /// Reports a row that would otherwise become a line of the last bill.
    bool is_row_of_totals(const TableRow& row) {
        for (const TableCell& cell : row.cells) {
            std::string word = lower_case(trimmed(cell));
            for (const std::string_view colon : {":", "："}) {
                if (word.ends_with(colon)) word.erase(word.size() - colon.size());
            }
            if (std::ranges::find(words_of_totals, word) == std::ranges::end(words_of_totals)) continue;
            errors_.add(source_, cell.offset, words::row_of_totals, cell.text);
            return true;
        }
        return false;
    }

    [[nodiscard]] bool is_other(const TableRow& row, std::string_view field) const {
        const std::size_t index = *find(field, true);
        return row.cells[index].text != bill_row_->cells[index].text;
    }

    void tell_differences(const TableRow& row) {
        for (std::size_t index = 0; index < columns_.size(); ++index) {
            const Column& column = columns_[index];
            if (!column.is_of_bill || !is_other(row, column.field) || row.cells[index].text.empty()) continue;
            errors_.add(source_, row.cells[index].offset, words::differs_in_bill, column.field, row.cells[index].text,
                        bill_row_->cells[index].text);
        }
    }

    void finish_bill() {
        if (!bill_row_) return;
        InputValue bill = cells_of(*bill_row_, true);
        bill.children.push_back(std::move(lines_));
        take_(nullptr, bill);
        bill_row_.reset();
    }

    const SourceText& source_;
    const NextRow& next_;
    const std::string& table_name_;
    InputErrors& errors_;
    const TakeRecord& take_;
    const MasterTable* table_ = nullptr;
    std::vector<Column> columns_;
    std::optional<TableRow> bill_row_;  ///< the first of the bill at hand
    InputValue lines_;
};

}  // namespace

void read_table(const SourceText& source, const NextRow& next, const std::string& table, InputErrors& errors,
                const TakeRecord& take) {
    TableRecords(source, next, table, errors, take).read();
}

bool is_blank_row(const TableRow& row) {
    return std::ranges::all_of(row.cells, [](const TableCell& cell) { return trimmed(cell).empty(); });
}

bool is_header_of_bills(const TableRow& row) {
    return std::ranges::any_of(row.cells, [](const TableCell& cell) { return trimmed(cell).starts_with(bill_prefix); });
}

}  // namespace vantlo
