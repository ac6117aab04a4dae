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

namespace {

constexpr std::string_view delimiters = ",;\t|";

/// How many values a delimiter makes of the first row that has any.
std::size_t values_of_first_row(std::string_view text, char delimiter, char quote) {
    std::size_t values = 1;
    bool is_quoted = false, is_blank = true;
    for (const char character : text) {
        if (character == quote) {
            is_quoted = !is_quoted;
        } else if (is_quoted) {
            is_blank = false;
        } else if (character == delimiter) {
            ++values;
        } else if (character == '\n') {
            if (!is_blank) return values;
            values = 1;
        } else if (delimiters.find(character) == std::string_view::npos && character != ' ' && character != '\r') {
            is_blank = false;
        }
    }
    return values;
}

/// The delimiter that a first line such as `sep=;` or `"sep=;"` names, and the length of that line.
std::optional<std::pair<char, std::size_t>> named_delimiter(std::string_view text) {
    std::string_view line = text.substr(0, text.find('\n'));
    const std::size_t length = std::min(line.size() + 1, text.size());
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.size() > 1 && line.starts_with('"') && line.ends_with('"')) line = line.substr(1, line.size() - 2);
    constexpr std::string_view prefix = "sep=";
    const bool is_named =
        line.size() == prefix.size() + 1 &&
        std::ranges::equal(
            line.substr(0, prefix.size()), prefix, {}, [](char letter) { return static_cast<char>(letter | 0x20); },
            [](char letter) { return static_cast<char>(letter | 0x20); });
    if (!is_named || delimiters.find(line.back()) == std::string_view::npos) return std::nullopt;
    return std::pair{line.back(), length};
}

}  // namespace

CsvDialect detect_dialect(std::string_view text, const CsvOptions& options) {
    CsvDialect dialect;
    dialect.quote = options.quote.value_or('"');
    const auto named = named_delimiter(text);
    if (named) dialect.start = named->second;
    if (options.delimiter) {
        dialect.delimiter = *options.delimiter;
    } else if (named) {
        dialect.delimiter = named->first;
    } else {
        dialect.delimiter = *std::ranges::max_element(
            delimiters, {}, [&](char delimiter) { return values_of_first_row(text, delimiter, dialect.quote); });
    }
    return dialect;
}

std::optional<TableRow> CsvReader::next() {
    while (!at_end()) {
        TableRow row{at_, {}};
        if (!take_line_end() && read_row(row)) return row;
    }
    return std::nullopt;
}

bool CsvReader::read_row(TableRow& row) {
    do {
        TableCell& cell = row.cells.emplace_back(TableCell{std::string(), at_});
        if (!(take(dialect_.quote) ? read_quoted(cell) : read_plain(cell))) return false;
    } while (take(dialect_.delimiter));
    if (at_end() || take_line_end()) return true;
    if (text_[at_] == '\r') return refuse(at_, words::lone_return);
    if (text_[at_] == dialect_.quote) return refuse(at_, words::stray_quote);
    return refuse(at_, words::text_after_quote);
}

bool CsvReader::read_quoted(TableCell& cell) {
    for (;;) {
        const std::size_t quote = text_.find(dialect_.quote, at_);
        if (quote == std::string_view::npos) return refuse(cell.offset, words::no_closing_quote);
        cell.text += text_.substr(at_, quote - at_);
        at_ = quote + 1;
        if (!take(dialect_.quote)) return true;
        cell.text += dialect_.quote;
    }
}

bool CsvReader::read_plain(TableCell& cell) {
    const char ends[] = {dialect_.delimiter, dialect_.quote, '\r', '\n'};
    const std::size_t end = std::min(text_.find_first_of(std::string_view(ends, sizeof ends), at_), text_.size());
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
