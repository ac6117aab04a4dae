#include "import/csv_records.h"

#include <algorithm>
#include <filesystem>

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

class CsvRecords {
public:
    CsvRecords(const SourceText& source, const std::string& table, InputErrors& errors, const TakeRecord& take)
        : source_(source), table_name_(table), errors_(errors), take_(take), rows_(source, errors) {}

    void read() {
        const std::optional<CsvRow> header = rows_.next();
        if (!header) return;
        const bool is_bills =
            std::ranges::any_of(header->cells, [](const CsvCell& cell) { return cell.text.starts_with(bill_prefix); });
        if (!is_bills && !find_table(*header)) return;
        if (!read_header(*header, is_bills)) return;
        while (const std::optional<CsvRow> row = rows_.next()) {
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
    bool find_table(const CsvRow& header) {
        const std::string name =
            table_name_.empty() ? std::filesystem::path(source_.file()).stem().string() : table_name_;
        table_ = find_master_table(name);
        if (table_ != nullptr) return true;
        errors_.add(source_, header.offset, words::no_table_named, name);
        return false;
    }

    /// Returns false if the rows cannot be told apart by it.
    bool read_header(const CsvRow& header, bool is_bills) {
        for (const CsvCell& cell : header.cells) {
            Column column{cell.text, is_bills && cell.text.starts_with(bill_prefix)};
            if (column.is_of_bill) column.field.erase(0, bill_prefix.size());
            column.is_known = is_bills ? is_known_to_bills(column) : has_field(table_->columns, column.field);
            if (!column.is_known) errors_.add(source_, cell.offset, words::unknown_column, cell.text);
            if (find(column.field, column.is_of_bill)) {
                errors_.add(source_, cell.offset, words::column_twice, cell.text);
            }
            columns_.push_back(std::move(column));
        }
        return is_bills ? needs(header, {"bill.kind", "bill.id", "goods", "quantity"})
                        : needs_keys(header, table_->columns.first(table_->keys));
    }

    bool needs(const CsvRow& header, std::initializer_list<std::string_view> names) {
        bool has_all = true;
        for (const std::string_view name : names) {
            if (std::ranges::find(header.cells, name, &CsvCell::text) != header.cells.end()) continue;
            errors_.add(source_, header.offset, words::column_missing, name);
            has_all = false;
        }
        return has_all;
    }

    bool needs_keys(const CsvRow& header, std::span<const BillColumn> keys) {
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

    bool is_complete(const CsvRow& row) {
        if (row.cells.size() == columns_.size()) return true;
        const bool is_short = row.cells.size() < columns_.size();
        errors_.add(source_, is_short ? row.offset : row.cells[columns_.size()].offset, words::values_of_row,
                    Count(row.cells.size()), Count(columns_.size()));
        return false;
    }

    /// The row's values of the bill, or of its line, that are not empty.
    InputValue cells_of(const CsvRow& row, bool is_of_bill) const {
        InputValue object{InputValue::Kind::object, row.offset, {}, {}, 0};
        for (std::size_t index = 0; index < columns_.size(); ++index) {
            const Column& column = columns_[index];
            const CsvCell& cell = row.cells[index];
            if (column.is_of_bill != is_of_bill || !column.is_known || cell.text.empty()) continue;
            object.children.push_back({InputValue::Kind::cell, cell.offset, cell.text, column.field, cell.offset});
        }
        return object;
    }

    void add_to_bill(const CsvRow& row) {
        if (bill_row_ && (is_other(row, "kind") || is_other(row, "id"))) finish_bill();
        if (bill_row_) {
            tell_differences(row);
        } else {
            bill_row_ = row;
            lines_ = {InputValue::Kind::list, row.offset, {}, "lines", row.offset};
        }
        InputValue line = cells_of(row, false);
        if (!line.children.empty()) lines_.children.push_back(std::move(line));
    }

    [[nodiscard]] bool is_other(const CsvRow& row, std::string_view field) const {
        const std::size_t index = *find(field, true);
        return row.cells[index].text != bill_row_->cells[index].text;
    }

    void tell_differences(const CsvRow& row) {
        for (std::size_t index = 0; index < columns_.size(); ++index) {
            const Column& column = columns_[index];
            if (!column.is_of_bill || !is_other(row, column.field)) continue;
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
    const std::string& table_name_;
    InputErrors& errors_;
    const TakeRecord& take_;
    CsvReader rows_;
    const MasterTable* table_ = nullptr;
    std::vector<Column> columns_;
    std::optional<CsvRow> bill_row_;  ///< the first of the bill at hand
    InputValue lines_;
};

}  // namespace

void read_csv(const SourceText& source, const std::string& table, InputErrors& errors, const TakeRecord& take) {
    CsvRecords(source, table, errors, take).read();
}

}  // namespace vantlo
