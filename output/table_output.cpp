#include "output/table_output.h"

#include <sys/ioctl.h>
#include <unistd.h>
#include <uniwidth.h>

#include <algorithm>
#include <cstdlib>

#include "output/visible.h"
#include "output/wrapped_text.h"

namespace vantlo {

namespace {

constexpr std::string_view gap = "  ";

std::optional<std::size_t> table_width;

/// The widths with which a table fits into `most` cells: the widest text columns give way first, none to less than
/// `narrowest`; numbers never do. Nothing if that is not enough.
std::optional<std::vector<std::size_t>> fit(std::vector<std::size_t> widths,
                                            const std::vector<TableOutput::Column>& columns, std::size_t most) {
    constexpr std::size_t narrowest = 8;
    std::size_t sum = (widths.size() - 1) * gap.size();
    for (const std::size_t width : widths) sum += width;
    for (; sum > most; --sum) {
        std::size_t* widest = nullptr;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const bool gives_way = columns[i].align == TableOutput::Align::left && widths[i] > narrowest;
            if (gives_way && (widest == nullptr || widths[i] > *widest)) widest = &widths[i];
        }
        if (widest == nullptr) return std::nullopt;
        --*widest;
    }
    return widths;
}

}  // namespace

std::size_t cell_width(std::string_view text) {
    // libunistring takes the width of ambiguous characters from the encoding's name: narrow for UTF-8.
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    return static_cast<std::size_t>(std::max(0, u8_width(bytes, text.size(), "UTF-8")));
}

void TableOutput::add_row(const std::vector<std::string>& cells) {
    std::vector<std::string>& row = rows_.emplace_back();
    for (const std::string& cell : cells) row.push_back(visible(cell));
}

void TableOutput::add_totals(const std::vector<std::string>& cells) {
    std::vector<std::string>& row = totals_.emplace_back();
    for (const std::string& cell : cells) row.push_back(visible(cell));
}

std::vector<std::size_t> TableOutput::natural_widths() const {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        std::size_t width = cell_width(columns_[i].title);
        for (const Cells& row : rows_) width = std::max(width, cell_width(row[i]));
        for (const Cells& row : totals_) width = std::max(width, cell_width(row[i]));
        widths.push_back(width);
    }
    return widths;
}

std::string TableOutput::coloured(std::size_t column, const std::string& cell, bool is_title) const {
    const bool is_negative = columns_[column].align == Align::right && cell.starts_with('-');
    if (!has_colour_ || cell.empty() || (!is_title && !is_negative)) return cell;
    return (is_title ? "\033[1m" : "\033[31m") + cell + "\033[0m";
}

/// Adds the cells of a row, in as many lines as the cell with most of them needs.
void TableOutput::add_line(std::string& text, const Cells& cells, const std::vector<std::size_t>& widths,
                           bool is_title) const {
    std::vector<std::vector<std::string>> lines;
    std::size_t height = 1;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        lines.push_back(cell_width(cells[i]) <= widths[i] ? Cells{cells[i]} : wrapped(cells[i], widths[i]));
        height = std::max(height, lines.back().size());
    }
    for (std::size_t shown = 0; shown < height; ++shown) {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string cell = shown < lines[i].size() ? lines[i][shown] : "";
            const std::string padding(widths[i] - std::min(widths[i], cell_width(cell)), ' ');
            if (i > 0) line += gap;
            const std::string shown_cell = coloured(i, cell, is_title);
            line += columns_[i].align == Align::right ? padding + shown_cell : shown_cell + padding;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
}

std::string TableOutput::blocks(std::size_t width) const {
    std::size_t titles_width = 0;
    for (const Column& column : columns_) titles_width = std::max(titles_width, cell_width(column.title));
    std::string text;
    const auto add_block = [&](const Cells& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (cells[i].empty()) continue;
            const std::string& title = columns_[i].title;
            const std::string beginning = title + std::string(titles_width - cell_width(title) + gap.size(), ' ');
            text += coloured(i, beginning, true) +
                    (columns_[i].align == Align::right ? coloured(i, cells[i], false)
                                                       : wrapped_text(cells[i], width, titles_width + gap.size())) +
                    "\n";
        }
        text += "\n";
    };
    for (const Cells& row : rows_) add_block(row);
    for (const Cells& row : totals_) add_block(row);
    return text;
}

std::string TableOutput::text() const {
    std::vector<std::size_t> widths = natural_widths();
    if (table_width) {
        const std::optional<std::vector<std::size_t>> fitting = fit(widths, columns_, *table_width);
        if (!fitting) return blocks(*table_width);
        widths = *fitting;
    }
    std::string text;
    const auto add_rule = [&] {
        for (std::size_t i = 0; i < widths.size(); ++i)
            text += std::string(i == 0 ? "" : gap) + std::string(widths[i], '-');
        text += "\n";
    };
    Cells titles;
    for (const Column& column : columns_) titles.push_back(column.title);
    add_line(text, titles, widths, true);
    add_rule();
    for (const Cells& row : rows_) add_line(text, row, widths, false);
    if (!totals_.empty()) add_rule();
    for (const Cells& row : totals_) add_line(text, row, widths, false);
    return text;
}

void fit_tables_to(std::optional<std::size_t> width) { table_width = width; }

std::optional<std::size_t> terminal_width(int descriptor) {
    winsize size{};
    const bool is_known = ::isatty(descriptor) == 1 && ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return is_known ? std::optional<std::size_t>(size.ws_col) : std::nullopt;
}

bool wants_colour(int descriptor) {
    const auto value_of = [](const char* name) {
        const char* const value = std::getenv(name);
        return std::string(value == nullptr ? "" : value);
    };
    return ::isatty(descriptor) == 1 && value_of("NO_COLOR").empty() && value_of("TERM") != "dumb";
}

}  // namespace vantlo
