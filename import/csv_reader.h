#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "import/input_errors.h"
#include "import/input_value.h"

namespace vantlo {

/// A cell of a table: of a CSV file, or of a sheet.
struct TableCell {
    std::string text;
    std::size_t offset;  ///< of its first byte, which may be the opening quote
    InputValue::Kind kind = InputValue::Kind::cell;
    bool is_covered = false;  ///< by the cell that it is merged with, whose value is shown in its place
};

struct TableRow {
    std::size_t offset;
    std::vector<TableCell> cells;
};

/// Gives the rows of a table one by one, then nothing.
using NextRow = std::function<std::optional<TableRow>()>;

/// What separates the values of a CSV file, and what encloses them.
struct CsvDialect {
    char delimiter = ',';
    char quote = '"';
    std::size_t start = 0;  ///< the offset of the first row, behind a line such as `sep=;`
};

/// What a user says about a CSV file; what is left out is detected, and the quote is `"`.
struct CsvOptions {
    std::optional<char> delimiter = {};
    std::optional<char> quote = {};
};

/// The dialect of a text: what its line `sep=` says, else the one of comma, semicolon, tab and bar that makes the most
/// values of the first row that is not blank; a comma if none makes more.
CsvDialect detect_dialect(std::string_view text, const CsvOptions& options);

/// Reads values row by row. Empty lines are skipped; lines end with CR LF or LF.
/// Source   RFC 4180.
class CsvReader {
public:
    CsvReader(const SourceText& source, InputErrors& errors, const CsvDialect& dialect = {})
        : source_(source), text_(source.text()), errors_(errors), dialect_(dialect), at_(dialect.start) {}

    /// The next row; nothing at the end.
    /// Errors   a row that breaks the rules of quoting is reported and skipped.
    std::optional<TableRow> next();

private:
    bool read_row(TableRow& row);
    bool read_quoted(TableCell& cell);
    bool read_plain(TableCell& cell);
    bool refuse(std::size_t offset, const Message& reason);
    bool take(std::string_view expected);
    bool take(char expected) { return take(std::string_view(&expected, 1)); }
    bool take_line_end() { return take("\n") || take("\r\n"); }
    [[nodiscard]] bool at_end() const { return at_ == text_.size(); }

    const SourceText& source_;
    std::string_view text_;
    InputErrors& errors_;
    CsvDialect dialect_;
    std::size_t at_;
};

}  // namespace vantlo
