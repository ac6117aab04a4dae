#include "ado/native/statement_text.h"

#include <algorithm>
#include <cctype>

#include "automation/error.h"

namespace vantlo {

namespace {

/// The length of the `$tag$` that a text begins with, PostgreSQL's quote around the body of a function; 0 if there is none.
std::size_t length_of_dollar_tag(std::string_view script) {
    if (script.front() != '$') return 0;
    const auto is_in_tag = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
    std::size_t end = 1;
    while (end < script.size() && is_in_tag(static_cast<unsigned char>(script[end]))) ++end;
    return end < script.size() && script[end] == '$' ? end + 1 : 0;
}

/// The length of the first piece of a script: a comment, a quoted text, or one character.
std::size_t length_of_piece(std::string_view script) {
    if (script.starts_with("--")) return std::min(script.find('\n'), script.size());
    if (script.starts_with("/*")) return std::min(script.find("*/", 2), script.size() - 2) + 2;
    if (const std::size_t tag = length_of_dollar_tag(script); tag != 0) {
        const std::size_t end = script.find(script.substr(0, tag), tag);
        return end == std::string_view::npos ? script.size() : end + tag;
    }
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
    constexpr std::string_view command = "delimiter ";
    std::string_view delimiter = ";";
    while (!script.empty()) {
        if (statement.empty() && script.starts_with(command)) {
            const std::string_view line = script.substr(0, script.find('\n'));
            delimiter = line.substr(command.size());
            script.remove_prefix(line.size());
            continue;
        }
        if (script.starts_with(delimiter)) {
            end_statement();
            script.remove_prefix(delimiter.size());
            continue;
        }
        const std::string_view piece = script.substr(0, length_of_piece(script));
        script.remove_prefix(piece.size());
        if (piece.starts_with("--")) continue;
        if (!statement.empty() || !is_blank(piece.front())) {
            statement += piece;
        }
    }
    end_statement();
    return statements;
}

}  // namespace vantlo
