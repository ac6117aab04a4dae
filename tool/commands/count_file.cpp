#include "tool/commands/count_file.h"

#include <algorithm>
#include <charconv>

#include "automation/number_text.h"
#include "import/csv_reader.h"
#include "import/encoding.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message no_sheet_name   = {"没有盘点表编号：这不是 vantlo count sheet 写出的表", "no row has the sheet's name: this is no sheet of vantlo count sheet"};
constexpr Message bad_sheet_name  = {"“{}”不是盘点表编号", "\"{}\" is no name of a sheet"};
constexpr Message other_sheet     = {"此行属于另一张盘点表“{}”", "this row is of another sheet, \"{}\""};
constexpr Message other_warehouse = {"此行属于另一仓库“{}”", "this row is of another warehouse, \"{}\""};
constexpr Message no_column       = {"缺少列“{}”", "there is no column \"{}\""};
constexpr Message no_goods        = {"有数量而没有商品", "a quantity without goods"};
constexpr Message no_quantity     = {"“{}”不是数量；未盘点请留空", "\"{}\" is no quantity; leave it empty if it was not counted"};
constexpr Message negative_count  = {"盘点数量不能为负：{}", "nobody counts less than nothing: {}"};
constexpr Message too_fine        = {"数量最多四位小数：{}", "a quantity has four decimals at most: {}"};
constexpr Message no_status       = {"“{}”不是状态", "\"{}\" is no status"};
constexpr Message counted_twice   = {"与第 {} 行是同一商品、型号和状态；请合为一行", "the same goods, models and status as in line {}: add them up in one row"};
constexpr Message no_text         = {"无法识别此文件的编码；请存为 UTF-8", "the encoding of the file is not known; save it as UTF-8"};
constexpr Message short_row       = {"此行只有 {} 个值，表头有 {} 列", "the row has {} values, the header {}"};
// clang-format on

}  // namespace words

namespace {

/// The file in the encoding that is certain, else in whichever of two it is without a fault.
std::optional<std::string> read_text(const std::string& path, InputErrors& errors) {
    const std::optional<std::string> bytes = read_bytes(path, errors);
    if (!bytes) return std::nullopt;
    const EncodingGuess guess = guess_encoding(*bytes);
    for (const Encoding encoding : {guess.is_certain ? guess.encoding : Encoding::utf8, Encoding::gb18030}) {
        std::optional<DecodedText> decoded = decode(*bytes, encoding);
        if (decoded && decoded->faults.empty()) return std::move(decoded->text);
    }
    errors.add(path, words::no_text);
    return std::nullopt;
}

/// A cell without blanks around it, and without the apostrophe that kept it from being a formula.
std::string plain(const std::string& cell) {
    const std::size_t first = cell.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    std::string text = cell.substr(first, cell.find_last_not_of(" \t") - first + 1);
    const bool is_kept =
        text.size() > 1 && text[0] == '\'' && std::string_view("=+-@").find(text[1]) != std::string_view::npos;
    return is_kept ? text.substr(1) : text;
}

class SheetReader {
public:
    SheetReader(const SourceText& source, InputErrors& errors)
        : source_(source),
          errors_(errors),
          dialect_(detect_dialect(source.text(), {})),
          rows_(source, errors, dialect_) {}

    CountedSheet read() {
        const std::optional<TableRow> header = rows_.next();
        if (!header || !read_header(*header)) return {};
        while (const std::optional<TableRow> row = rows_.next()) take(*row);
        if (sheet_.name.text.empty()) errors_.add(source_, 0, words::no_sheet_name);
        return std::move(sheet_);
    }

private:
    bool read_header(const TableRow& header) {
        columns_ = header.cells.size();
        for (std::size_t i = 0; i < header.cells.size(); ++i) places_.try_emplace(plain(header.cells[i].text), i);
        bool has_all = true;
        for (const char* const needed : {"sheet", "warehouse", "goods", "counted"}) {
            if (places_.contains(needed)) continue;
            errors_.add(source_, header.offset, words::no_column, needed);
            has_all = false;
        }
        return has_all;
    }

    void take(const TableRow& row) {
        const bool is_empty =
            std::ranges::all_of(row.cells, [](const TableCell& cell) { return plain(cell.text).empty(); });
        if (is_empty) return;
        if (row.cells.size() < columns_) {
            errors_.add(source_, row.offset, words::short_row, row.cells.size(), columns_);
            return;
        }
        take_name(row);
        CountedLine line;
        line.key.goods = text(row, "goods");
        line.key.model1 = text(row, "model1");
        line.key.model2 = text(row, "model2");
        line.counted = quantity(row, "counted");
        if (line.key.goods.empty()) {
            if (line.counted) errors_.add(source_, offset(row, "goods"), words::no_goods);
            return;  // the row of an empty warehouse
        }
        const std::string status = cell(row, "status");
        const char* const end = status.data() + status.size();
        if (!status.empty() && std::from_chars(status.data(), end, line.key.status).ptr != end)
            errors_.add(source_, offset(row, "status"), words::no_status, status);
        line.expected = quantity(row, "expected");
        const auto [first, is_first] = seen_.try_emplace(line.key, row.offset);
        if (is_first) {
            sheet_.lines.push_back(std::move(line));
        } else {
            errors_.add(source_, row.offset, words::counted_twice, source_.place(first->second).line);
        }
    }

    void take_name(const TableRow& row) {
        const Text name = text(row, "sheet"), warehouse = text(row, "warehouse");
        if (name.empty()) return;  // added by hand
        if (sheet_.name.text.empty()) {
            const std::optional<SheetName> read = sheet_name_from(name);
            if (!read) {
                errors_.add(source_, offset(row, "sheet"), words::bad_sheet_name, to_utf8(name));
                return;
            }
            sheet_.name = *read;
            sheet_.warehouse = warehouse;
        }
        if (name != sheet_.name.text) errors_.add(source_, offset(row, "sheet"), words::other_sheet, to_utf8(name));
        if (warehouse != sheet_.warehouse)
            errors_.add(source_, offset(row, "warehouse"), words::other_warehouse, to_utf8(warehouse));
    }

    [[nodiscard]] std::string cell(const TableRow& row, const std::string& column) const {
        const auto found = places_.find(column);
        return found == places_.end() ? std::string() : plain(row.cells[found->second].text);
    }

    [[nodiscard]] Text text(const TableRow& row, const std::string& column) const {
        return from_utf8(cell(row, column));
    }

    [[nodiscard]] std::size_t offset(const TableRow& row, const std::string& column) const {
        return row.cells[places_.at(column)].offset;
    }

    std::optional<Currency> quantity(const TableRow& row, const std::string& column) {
        std::string number = cell(row, column);
        if (number.empty()) return std::nullopt;
        const std::string shown = number;
        if (dialect_.delimiter != ',' && number.find('.') == std::string::npos) std::ranges::replace(number, ',', '.');
        const bool is_plain = number.find_first_not_of("-0123456789.") == std::string::npos;
        const std::optional<Currency> read = is_plain ? currency_from_text(from_utf8(number)) : std::nullopt;
        const std::size_t point = number.find('.');
        constexpr std::size_t most_decimals = 4;
        if (!read) {
            errors_.add(source_, offset(row, column), words::no_quantity, shown);
        } else if (point != std::string::npos && number.size() - point - 1 > most_decimals) {
            errors_.add(source_, offset(row, column), words::too_fine, shown);
        } else if (column == "counted" && *read < Currency()) {
            errors_.add(source_, offset(row, column), words::negative_count, shown);
        }
        return read;
    }

    const SourceText& source_;
    InputErrors& errors_;
    CsvDialect dialect_;
    CsvReader rows_;
    std::size_t columns_ = 0;
    std::map<std::string, std::size_t> places_;  // of the columns
    std::map<CountKey, std::size_t> seen_;
    CountedSheet sheet_;
};

}  // namespace

CountedSheet read_counted_sheet(const std::string& path, InputErrors& errors) {
    const std::optional<std::string> text = read_text(path, errors);
    if (!text) return {};
    const SourceText source(path, *text);
    return SheetReader(source, errors).read();
}

}  // namespace vantlo
