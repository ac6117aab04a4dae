#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantlo {

class InputErrors;

/// Where something stands in a file: both count from 1, the column in characters.
struct Place {
    std::size_t line = 1;
    std::size_t column = 1;

    friend bool operator==(const Place&, const Place&) = default;
};

/// What a reader reads, with the places of its parts: the text of a file, in UTF-8 whatever the file's own encoding, or
/// a sheet of a workbook.
class SourceText {
public:
    SourceText(std::string file, std::string text) : file_(std::move(file)), text_(std::move(text)) {}

    /// A sheet, which has no text: its offsets are those of cell_offset.
    static SourceText sheet(std::string file, std::string name) {
        SourceText source(std::move(file), {});
        source.sheet_ = std::move(name);
        return source;
    }

    /// The offset of a cell of a sheet; row and column count from 0.
    [[nodiscard]] static constexpr std::size_t cell_offset(std::size_t row, std::size_t column) {
        return row * widest_sheet + column;
    }

    /// How many columns a sheet can have.
    static constexpr std::size_t widest_sheet = 16384;

    [[nodiscard]] const std::string& file() const { return file_; }
    [[nodiscard]] std::string_view text() const { return text_; }

    /// The name of the sheet; nothing for a text.
    [[nodiscard]] const std::optional<std::string>& sheet_name() const { return sheet_; }

    /// The place of the byte at `offset`, which may be the end. Counts from the beginning of the file: for messages only.
    [[nodiscard]] Place place(std::size_t offset) const;

    /// Shape    `FILE:LINE:COLUMN`, or `FILE:SHEET!C7`; linear in the text, as `place` is.
    [[nodiscard]] std::string where(std::size_t offset) const;

private:
    std::string file_;
    std::string text_;
    std::optional<std::string> sheet_;
};

/// A cell as spreadsheets call it; row and column count from 0.
/// Example  (6, 2) -> `C7`
std::string cell_name(std::size_t row, std::size_t column);

/// Reads the bytes of a file, or of standard input if the path is `-`.
/// Returns  nothing if it cannot be read, which is reported.
std::optional<std::string> read_bytes(const std::string& path, InputErrors& errors);

}  // namespace vantlo
