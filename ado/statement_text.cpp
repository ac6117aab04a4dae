#include "ado/statement_text.h"

#include <algorithm>

#include "automation/error.h"

namespace vantlo {

namespace {

/// Where the piece at the beginning ends: a comment, a quoted text, or one character.
std::size_t length_of_piece(std::string_view script) {
    if (script.starts_with("--")) return std::min(script.find('\n'), script.size());
    const char first = script.front();
    if (first != '\'' && first != '"') return 1;
    return std::min(script.find(first, 1), script.size() - 1) + 1;
}

bool is_blank(char character) { return character == ' ' || character == '\t' || character == '\n'; }

}  // namespace

std::string checked_utf8(TextView statement) {
    if (statement.find(u'\0') != TextView::npos) {
        throw Failure(error::bad_argument, "the statement has a NUL in it, and the engine would stop reading there");
    }
    if (!is_well_formed(statement)) {
        throw Failure(error::bad_argument, "the statement has half of a surrogate pair in it, which is no character");
    }
    return to_utf8(statement);
}

std::vector<Text> statements_of(std::string_view script) {
    std::vector<Text> statements;
    std::string statement;
    const auto end_statement = [&] {
        while (!statement.empty() && is_blank(statement.back())) statement.pop_back();
        if (!statement.empty()) statements.push_back(from_utf8(statement));
        statement.clear();
    };
    while (!script.empty()) {
        const std::string_view piece = script.substr(0, length_of_piece(script));
        script.remove_prefix(piece.size());
        if (piece.starts_with("--")) continue;
        if (piece == ";") {
            end_statement();
        } else if (!statement.empty() || !is_blank(piece.front())) {
            statement += piece;
        }
    }
    end_statement();
    return statements;
}

}  // namespace vantlo
