#include "output/table_output.h"

#include <unistd.h>
#include <uniwidth.h>

#include <algorithm>
#include <cstdlib>

#include "output/visible.h"

namespace vantlo {

std::size_t cell_width(const std::string& text) {
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

std::string TableOutput::text() const {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        std::size_t width = cell_width(columns_[i].title);
        for (const auto& row : rows_) width = std::max(width, cell_width(row[i]));
        for (const auto& row : totals_) width = std::max(width, cell_width(row[i]));
        widths.push_back(width);
    }
    std::string text;
    const auto coloured = [&](std::size_t i, const std::string& cell, bool is_title) -> std::string {
        const bool is_negative = columns_[i].align == Align::right && cell.starts_with('-');
        if (!has_colour_ || cell.empty() || (!is_title && !is_negative)) return cell;
        return (is_title ? "\033[1m" : "\033[31m") + cell + "\033[0m";
    };
    const auto add = [&](const auto& cell_of, bool is_title = false) {
        std::string line;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const std::string& cell = cell_of(i);
            const std::string padding(widths[i] - cell_width(cell), ' ');
            if (i > 0) line += "  ";
            const std::string shown = coloured(i, cell, is_title);
            line += columns_[i].align == Align::right ? padding + shown : shown + padding;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    };
    const auto add_rule = [&] {
        std::vector<std::string> rule;
        for (const std::size_t width : widths) rule.emplace_back(width, '-');
        add([&](std::size_t i) -> const std::string& { return rule[i]; });
    };
    add([&](std::size_t i) -> const std::string& { return columns_[i].title; }, true);
    add_rule();
    for (const auto& row : rows_) add([&](std::size_t i) -> const std::string& { return row[i]; });
    if (!totals_.empty()) add_rule();
    for (const auto& row : totals_) add([&](std::size_t i) -> const std::string& { return row[i]; });
    return text;
}

bool wants_colour(int descriptor) {
    const auto value_of = [](const char* name) {
        const char* const value = std::getenv(name);
        return std::string(value == nullptr ? "" : value);
    };
    return ::isatty(descriptor) == 1 && value_of("NO_COLOR").empty() && value_of("TERM") != "dumb";
}

}  // namespace vantlo
