#pragma once

#include <optional>
#include <string>
#include <vector>

#include "import/input_errors.h"

namespace vantlo {

struct CsvCell {
    std::string text;
    std::size_t offset;  ///< of its first byte, which may be the opening quote
};

struct CsvRow {
    std::size_t offset;
    std::vector<CsvCell> cells;
};

/// Reads comma-separated values row by row. Empty lines are skipped; lines end with CR LF or LF.
/// Source   RFC 4180.
class CsvReader {
public:
    CsvReader(const SourceText& source, InputErrors& errors) : source_(source), text_(source.text()), errors_(errors) {}

    /// The next row; nothing at the end.
    /// Errors   a row that breaks the rules of quoting is reported and skipped.
    std::optional<CsvRow> next();

private:
    bool read_row(CsvRow& row);
    bool read_quoted(CsvCell& cell);
    bool read_plain(CsvCell& cell);
    bool refuse(std::size_t offset, const Message& reason);
    bool take(std::string_view expected);
    bool take_line_end() { return take("\n") || take("\r\n"); }
    [[nodiscard]] bool at_end() const { return at_ == text_.size(); }

    const SourceText& source_;
    std::string_view text_;
    InputErrors& errors_;
    std::size_t at_ = 0;
};

}  // namespace vantlo
