#include "import/source_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

#include "import/input_errors.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message file_unreadable = {"无法读取此文件", "the file cannot be read"};
// clang-format on

}  // namespace words

namespace {

bool is_continuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

std::string all_of(std::istream& stream) {
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace

Place SourceText::place(std::size_t offset) const {
    const std::string_view before = text().substr(0, offset);
    const std::size_t line_start = before.rfind('\n') + 1;  // 0 on the first line
    const std::string_view line = before.substr(line_start);
    return {
        static_cast<std::size_t>(std::ranges::count(before, '\n')) + 1,
        static_cast<std::size_t>(std::ranges::count_if(line, [](char byte) { return !is_continuation(byte); })) + 1};
}

std::string SourceText::where(std::size_t offset) const {
    if (sheet_) {
        return fmt::format("{}:{}!{}", file_, *sheet_, cell_name(offset / widest_sheet, offset % widest_sheet));
    }
    const Place found = place(offset);
    return fmt::format("{}:{}:{}", file_, found.line, found.column);
}

std::string cell_name(std::size_t row, std::size_t column) {
    std::string letters;
    for (std::size_t left = column + 1; left > 0; left = (left - 1) / 26) {
        letters.insert(letters.begin(), static_cast<char>('A' + (left - 1) % 26));
    }
    return letters + std::to_string(row + 1);
}

std::optional<std::string> read_bytes(const std::string& path, InputErrors& errors) {
    if (path == "-") return all_of(std::cin);
    std::ifstream file(path, std::ios::binary);
    std::error_code ignored;
    if (file && !std::filesystem::is_directory(path, ignored)) return all_of(file);
    errors.add(path, words::file_unreadable);
    return std::nullopt;
}

}  // namespace vantlo
