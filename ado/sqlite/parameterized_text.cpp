#include "ado/sqlite/parameterized_text.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>

namespace vantlo {

namespace {

constexpr std::size_t longest_statement = 64 * 1024;
constexpr std::size_t most_digits = 18;  // of a whole number that fits 64 bits for certain

enum class CharacterClass : unsigned char { other, blank, word, digit, symbol, quote };

// Source   https://www.sqlite.org/src/file/src/tokenize.c: every byte beyond ASCII belongs to a name.
constexpr std::array<CharacterClass, 256> character_classes = [] {
    std::array<CharacterClass, 256> classes{};
    const auto set = [&classes](std::string_view characters, CharacterClass character_class) {
        for (const char character : characters) classes[static_cast<unsigned char>(character)] = character_class;
    };
    set(" \t\n\f\r", CharacterClass::blank);
    set("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", CharacterClass::word);
    for (std::size_t byte = 0x80; byte < 0x100; ++byte) classes[byte] = CharacterClass::word;
    set("0123456789", CharacterClass::digit);
    set("=<>!(),.+-*/?", CharacterClass::symbol);
    set("'", CharacterClass::quote);
    return classes;
}();

CharacterClass class_at(std::string_view text, std::size_t position) {
    return position < text.size() ? character_classes[static_cast<unsigned char>(text[position])]
                                  : CharacterClass::other;
}

std::size_t end_of(CharacterClass character_class, std::string_view text, std::size_t position) {
    while (class_at(text, position) == character_class) ++position;
    return position;
}

enum class TokenKind { not_understood, blanks, word, integer, real, text, symbol };

struct Token {
    TokenKind kind = TokenKind::not_understood;
    std::string_view text;

    [[nodiscard]] bool is(std::string_view symbol) const { return kind == TokenKind::symbol && text == symbol; }
};

Token word_at(std::string_view text) {
    std::size_t end = 1;
    while (class_at(text, end) == CharacterClass::word || class_at(text, end) == CharacterClass::digit) ++end;
    // x'…' is a blob; and a byte order mark counts as a blank where a word begins.
    if (class_at(text, end) == CharacterClass::quote || text.starts_with("\xEF\xBB\xBF")) return {};
    return {TokenKind::word, text.substr(0, end)};
}

// Digits, a point with digits behind it, an exponent; nothing that belongs to a name may follow.
Token number_at(std::string_view text) {
    std::size_t end = end_of(CharacterClass::digit, text, 0);
    const std::size_t whole_digits = end;
    if (text.substr(end).starts_with('.')) {
        const std::size_t first_decimal = end + 1;
        end = end_of(CharacterClass::digit, text, first_decimal);
        if (end == first_decimal) return {};
    }
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        std::size_t first_digit = end + 1;
        if (first_digit < text.size() && (text[first_digit] == '+' || text[first_digit] == '-')) ++first_digit;
        end = end_of(CharacterClass::digit, text, first_digit);
        if (end == first_digit) return {};
    }
    if (class_at(text, end) == CharacterClass::word || text.substr(end).starts_with('.')) return {};
    if (end == whole_digits && whole_digits > most_digits) return {};
    return {end == whole_digits ? TokenKind::integer : TokenKind::real, text.substr(0, end)};
}

// A text in quotes; doubled quotes inside it belong to it.
Token quoted_at(std::string_view text) {
    std::size_t end = text.find('\'', 1);
    while (end != std::string_view::npos && class_at(text, end + 1) == CharacterClass::quote) {
        end = text.find('\'', end + 2);
    }
    if (end == std::string_view::npos) return {};
    return {TokenKind::text, text.substr(0, end + 1)};
}

Token symbol_at(std::string_view text) {
    if (text.starts_with("--") || text.starts_with("/*")) return {};
    if (text.front() == '.' && class_at(text, 1) == CharacterClass::digit) return {};
    for (const std::string_view comparison : {"<=", ">=", "<>", "!=", "=="}) {
        if (text.starts_with(comparison)) return {TokenKind::symbol, comparison};
    }
    if (text.front() == '!') return {};
    return {TokenKind::symbol, text.substr(0, 1)};
}

Token first_token(std::string_view text) {
    switch (class_at(text, 0)) {
        case CharacterClass::blank: {
            return {TokenKind::blanks, text.substr(0, end_of(CharacterClass::blank, text, 0))};
        }
        case CharacterClass::word: return word_at(text);
        case CharacterClass::digit: return number_at(text);
        case CharacterClass::quote: return quoted_at(text);
        case CharacterClass::symbol: return symbol_at(text);
        case CharacterClass::other: break;
    }
    return {};
}

bool stays_in_the_shape(const Token& number) {
    return number.kind == TokenKind::integer && (number.text.front() == '0' || number.text == "1");
}

// Whether an operand must come next, so that a minus sign is not a subtraction.
bool asks_for_an_operand(const Token& token) { return token.kind == TokenKind::symbol && token.text != ")"; }

class ShapeReader {
public:
    explicit ShapeReader(std::string_view shape) : rest_(shape) { advance(); }

    bool is_understood() {
        if (accept_word("select")) return select_head() && optional_condition() && optional_order() && at_end();
        if (accept_word("update"))
            return name() && accept_word("set") && assignments() && optional_condition() && at_end();
        if (accept_word("insert")) return accept_word("into") && name() && optional_names() && values() && at_end();
        if (accept_word("delete")) return accept_word("from") && name() && optional_condition() && at_end();
        return false;
    }

private:
    void advance() {
        do {
            token_ = first_token(rest_);
            rest_.remove_prefix(token_.text.size());
        } while (token_.kind == TokenKind::blanks);
    }

    bool at_end() const { return token_.kind == TokenKind::not_understood && rest_.empty(); }

    bool accept_if(bool is_it) {
        if (is_it) advance();
        return is_it;
    }

    bool accept_symbol(std::initializer_list<std::string_view> symbols) {
        return accept_if(std::ranges::any_of(symbols, [this](std::string_view symbol) { return token_.is(symbol); }));
    }

    bool accept_word(std::string_view word) {
        return accept_if(token_.kind == TokenKind::word && token_.text.size() == word.size() &&
                         sqlite3_strnicmp(token_.text.data(), word.data(), static_cast<int>(word.size())) == 0);
    }

    bool plain_word() {
        return accept_if(token_.kind == TokenKind::word &&
                         sqlite3_keyword_check(token_.text.data(), static_cast<int>(token_.text.size())) == 0);
    }

    bool name() {
        do {
            if (!plain_word()) return false;
        } while (accept_symbol({"."}));
        return true;
    }

    // The column list is skipped: it has no marks, and no word that changes the meaning of later marks.
    bool select_head() {
        bool has_from = false;
        while (true) {
            if (accept_word("from")) {
                has_from = true;
            } else if (!plain_word() && !accept_word("left") && !accept_word("join") && !accept_word("on") &&
                       !accept_symbol({"*", ",", ".", "="})) {
                return has_from;
            }
        }
    }

    bool operand() {
        if (accept_symbol({"-"})) return number();
        return accept_symbol({"?"}) || number() || accept_word("null") || name();
    }

    bool number() { return accept_if(token_.kind == TokenKind::integer); }

    bool sum() {
        do {
            if (!operand()) return false;
        } while (accept_symbol({"+", "-", "*", "/"}));
        return true;
    }

    bool comparison() { return sum() && accept_symbol({"=", "==", "<", ">", "<=", ">=", "<>", "!="}) && sum(); }

    bool optional_condition() {
        if (!accept_word("where")) return true;
        do {
            if (!comparison()) return false;
        } while (accept_word("and") || accept_word("or"));
        return true;
    }

    bool optional_order() {
        if (!accept_word("order")) return true;
        if (!accept_word("by")) return false;
        do {
            if (!name()) return false;
            if (!accept_word("asc")) accept_word("desc");
        } while (accept_symbol({","}));
        return true;
    }

    bool assignments() {
        do {
            if (!name() || !accept_symbol({"="}) || !sum()) return false;
        } while (accept_symbol({","}));
        return true;
    }

    bool optional_names() {
        if (!accept_symbol({"("})) return true;
        do {
            if (!name()) return false;
        } while (accept_symbol({","}));
        return accept_symbol({")"});
    }

    bool values() {
        if (!accept_word("values") || !accept_symbol({"("})) return false;
        do {
            if (!sum()) return false;
        } while (accept_symbol({","}));
        return accept_symbol({")"});
    }

    std::string_view rest_;
    Token token_;
};

/// Takes a minus sign off the statement if it belongs to the literal number behind it. Returns whether it did.
bool take_sign(std::string_view& statement, const Token& previous) {
    const bool may_be_sign = statement.starts_with('-') && asks_for_an_operand(previous);
    if (!may_be_sign || class_at(statement, 1) != CharacterClass::digit) return false;
    const Token number = number_at(statement.substr(1));
    if (number.kind == TokenKind::not_understood || stays_in_the_shape(number)) return false;
    statement.remove_prefix(1);
    return true;
}

/// Adds a token. Returns false for one that no statement of this kind has.
bool add(const Token& token, bool is_negative, ParameterizedText& parameterized) {
    const auto add_literal = [&](Literal::Kind kind, std::string_view text) {
        parameterized.literals.push_back({kind, is_negative, text});
        parameterized.shape += '?';
    };
    switch (token.kind) {
        case TokenKind::not_understood: return false;
        case TokenKind::text:
            add_literal(Literal::Kind::text, token.text.substr(1, token.text.size() - 2));
            return true;
        case TokenKind::integer:
        case TokenKind::real:
            if (stays_in_the_shape(token)) break;
            add_literal(token.kind == TokenKind::real ? Literal::Kind::real : Literal::Kind::integer, token.text);
            return true;
        case TokenKind::symbol:
            if (token.is("?")) return false;
            break;
        case TokenKind::blanks:
        case TokenKind::word: break;
    }
    parameterized.shape += token.text;
    return true;
}

}  // namespace

bool parameterize(std::string_view statement, ParameterizedText& parameterized) {
    parameterized.shape.clear();
    parameterized.literals.clear();
    if (statement.size() > longest_statement) return false;

    Token previous;
    while (!statement.empty()) {
        const bool is_negative = take_sign(statement, previous);
        const Token token = first_token(statement);
        statement.remove_prefix(token.text.size());
        if (!add(token, is_negative, parameterized)) return false;
        if (token.kind != TokenKind::blanks) previous = token;
    }
    return true;
}

bool is_understood(std::string_view shape) { return ShapeReader(shape).is_understood(); }

}  // namespace vantlo
