#include "output/csv_field.h"

#include <charconv>
#include <string_view>

namespace vantlo {

namespace {

bool is_plain_number(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    double number = 0;
    const auto [stopped, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool has_letters = text.find_first_not_of("+-.0123456789eE") != std::string_view::npos;  // `-inf`
    return problem == std::errc() && stopped == text.data() + text.size() && !has_letters;
}

bool is_like_formula(std::string_view text) {
    return !text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos &&
           !is_plain_number(text);
}

}  // namespace

std::string csv_field(const std::string& text, CsvCells cells) {
    if (cells == CsvCells::for_spreadsheets && is_like_formula(text)) return csv_field("'" + text, CsvCells::exact);
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string field = "\"";
    for (const char character : text) field += character == '"' ? "\"\"" : std::string(1, character);
    return field + "\"";
}

}  // namespace vantlo
