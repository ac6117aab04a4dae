#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantlo {

/// A table of texts (UTF-8), its columns aligned by the terminal cells of their characters.
class TableOutput {
public:
    enum class Align { left, right };

    struct Column {
        std::string title;
        Align align = Align::left;
    };

    /// In colour the titles are bold and negative numbers red.
    explicit TableOutput(std::vector<Column> columns, bool has_colour = false)
        : columns_(std::move(columns)), has_colour_(has_colour) {}

    /// Control characters in cells are spelled out.
    void add_row(const std::vector<std::string>& cells);

    /// Adds a row below the table, and a rule before the first of these; control characters as above.
    void add_totals(const std::vector<std::string>& cells);

    /// Where the terminal's width is known and the table is wider, the cells of its text columns are wrapped; if even that
    /// does not help, each row becomes a block of lines, one for each column: `title: cell`.
    [[nodiscard]] std::string text() const;

private:
    using Cells = std::vector<std::string>;

    [[nodiscard]] std::vector<std::size_t> natural_widths() const;
    [[nodiscard]] std::string coloured(std::size_t column, const std::string& cell, bool is_title) const;
    void add_line(std::string& text, const Cells& cells, const std::vector<std::size_t>& widths, bool is_title) const;
    [[nodiscard]] std::string blocks(std::size_t width) const;

    std::vector<Column> columns_;
    bool has_colour_;
    std::vector<Cells> rows_;
    std::vector<Cells> totals_;
};

/// How many terminal cells a text takes: two for each Chinese character, none for marks.
std::size_t cell_width(std::string_view text);

/// Makes every table fit into so many cells from now on; without a width, tables are as wide as their cells.
void fit_tables_to(std::optional<std::size_t> width);

/// How many cells a line of the terminal has that a file descriptor writes to; nothing if it is none, or does not tell.
std::optional<std::size_t> terminal_width(int descriptor);

/// Whether text for a file descriptor may be coloured: on a terminal that can, unless the user has set NO_COLOR.
/// Source   no-color.org: set and not empty.
bool wants_colour(int descriptor);

}  // namespace vantlo
