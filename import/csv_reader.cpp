#include "import/csv_reader.h"

#include <algorithm>

namespace vantlo {

namespace words {

// clang-format off
constexpr Message lone_return    = {"单独的回车符不能结束一行", "a carriage return alone ends no line"};
constexpr Message stray_quote    = {"未加引号的值中有引号", "a quote inside a value that is not quoted"};
constexpr Message text_after_quote = {"右引号之后还有文字", "text after the closing quote"};
constexpr Message no_closing_quote = {"缺少右引号", "the closing quote is missing"};
// clang-format on

}  // namespace words

std::optional<CsvRow> CsvReader::next() {
    while (!at_end()) {
        CsvRow row{at_, {}};
        if (!take_line_end() && read_row(row)) return row;
    }
    return std::nullopt;
}

bool CsvReader::read_row(CsvRow& row) {
    do {
        CsvCell& cell = row.cells.emplace_back(CsvCell{std::string(), at_});
        if (!(take("\"") ? read_quoted(cell) : read_plain(cell))) return false;
    } while (take(","));
    if (at_end() || take_line_end()) return true;
    if (text_[at_] == '\r') return refuse(at_, words::lone_return);
    if (text_[at_] == '"') return refuse(at_, words::stray_quote);
    return refuse(at_, words::text_after_quote);
}

bool CsvReader::read_quoted(CsvCell& cell) {
    for (;;) {
        const std::size_t quote = text_.find('"', at_);
        if (quote == std::string_view::npos) return refuse(cell.offset, words::no_closing_quote);
        cell.text += text_.substr(at_, quote - at_);
        at_ = quote + 1;
        if (!take("\"")) return true;
        cell.text += '"';
    }
}

bool CsvReader::read_plain(CsvCell& cell) {
    const std::size_t end = std::min(text_.find_first_of(",\"\r\n", at_), text_.size());
    cell.text = text_.substr(at_, end - at_);
    at_ = end;
    return true;
}

bool CsvReader::refuse(std::size_t offset, const Message& reason) {
    errors_.add(source_, offset, reason);
    at_ = std::min(text_.find('\n', at_), text_.size());
    return false;
}

bool CsvReader::take(std::string_view expected) {
    if (!text_.substr(at_).starts_with(expected)) return false;
    at_ += expected.size();
    return true;
}

}  // namespace vantlo
