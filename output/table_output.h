#pragma once

#include <string>
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

    [[nodiscard]] std::string text() const;

private:
    std::vector<Column> columns_;
    bool has_colour_;
    std::vector<std::vector<std::string>> rows_;
    std::vector<std::vector<std::string>> totals_;
};

/// How many terminal cells a text takes: two for each Chinese character, none for marks.
std::size_t cell_width(const std::string& text);

/// Whether text for a file descriptor may be coloured: on a terminal that can, unless the user has set NO_COLOR.
/// Source   no-color.org: set and not empty.
bool wants_colour(int descriptor);

}  // namespace vantlo
