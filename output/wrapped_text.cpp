#include "output/wrapped_text.h"

#include <fmt/ranges.h>
#include <unilbrk.h>
#include <unistr.h>

#include "output/table_output.h"

namespace vantlo {

namespace {

bool is_ascii_sign(char byte) { return byte > ' ' && static_cast<unsigned char>(byte) < 0x80; }

/// The text in pieces, each of which stays on one line if it can; blanks stand at their ends.
std::vector<std::string_view> pieces_of(std::string_view text) {
    std::vector<char> breaks(text.size());
    u8_possible_linebreaks(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), "UTF-8", breaks.data());
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const bool is_in_word = is_ascii_sign(text[i - 1]) && is_ascii_sign(text[i]);
        if (breaks[i] != UC_BREAK_POSSIBLE || is_in_word) continue;
        pieces.push_back(text.substr(start, i - start));
        start = i;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::string_view without_last_blanks(std::string_view text) { return text.substr(0, text.find_last_not_of(' ') + 1); }

/// The longest beginning of a text that fits into `width`, one character at least.
std::string_view beginning_of(std::string_view text, std::size_t width) {
    std::size_t end = 0;
    while (end < text.size()) {
        ucs4_t character = 0;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        const int length = u8_mbtouc(&character, bytes + end, text.size() - end);
        const std::size_t next = end + static_cast<std::size_t>(length);
        if (end > 0 && cell_width(text.substr(0, next)) > width) break;
        end = next;
    }
    return text.substr(0, end);
}

}  // namespace

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> lines = {""};
    for (std::string_view piece : pieces_of(text)) {
        if (!lines.back().empty() && cell_width(lines.back() + std::string(without_last_blanks(piece))) > width)
            lines.emplace_back();
        while (cell_width(without_last_blanks(piece)) > width) {
            const std::string_view beginning = beginning_of(piece, width);
            lines.back() += beginning;
            lines.emplace_back();
            piece.remove_prefix(beginning.size());
        }
        lines.back() += piece;
    }
    for (std::string& line : lines) line = without_last_blanks(line);
    return lines;
}

std::string wrapped_text(std::string_view text, std::size_t width, std::size_t indent) {
    const std::vector<std::string> lines = wrapped(text, width > indent ? width - indent : 1);
    return fmt::format("{}", fmt::join(lines, "\n" + std::string(indent, ' ')));
}

}  // namespace vantlo
