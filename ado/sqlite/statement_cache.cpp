#include "ado/sqlite/statement_cache.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "ado/sqlite/sqlite_failure.h"

namespace vantlo {

namespace {

/// Prepares a statement that will run often. Returns: the engine's result code.
int prepare_to_keep(sqlite3* database, const std::string& text, PreparedStatement& prepared) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v3(database, text.c_str(), static_cast<int>(text.size()) + 1,
                                          SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    prepared = PreparedStatement(statement);
    return result;
}

std::int64_t integer_value(const Literal& literal) {
    std::int64_t value = 0;
    std::from_chars(literal.spelling.data(), literal.spelling.data() + literal.spelling.size(), value);
    return literal.is_negative ? -value : value;
}

std::string with_single_quotes(std::string_view spelling) {
    std::string text;
    text.reserve(spelling.size());
    for (std::size_t i = 0; i < spelling.size(); ++i) {
        text += spelling[i];
        if (spelling[i] == '\'') ++i;
    }
    return text;
}

int bind_text(sqlite3_stmt* statement, int position, std::string_view spelling) {
    if (spelling.find('\'') == std::string_view::npos) {
        return sqlite3_bind_text(statement, position, spelling.data(), static_cast<int>(spelling.size()),
                                 SQLITE_STATIC);
    }
    const std::string text = with_single_quotes(spelling);
    return sqlite3_bind_text(statement, position, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

}  // namespace

std::optional<ResultTable> StatementCache::run(const std::string& statement) {
    if (!parameterize(statement, parameterized_) || !find_or_prepare(statement)) return std::nullopt;
    PreparedStatement& prepared = kept_.front().statement;
    try {
        bind_literals(prepared.get(), statement);
        ResultTable result = prepared.read_to_end(statement);
        sqlite3_reset(prepared.get());
        sqlite3_clear_bindings(prepared.get());
        return result;
    } catch (...) {
        kept_.pop_front();
        throw;
    }
}

bool StatementCache::find_or_prepare(const std::string& statement) {
    const auto found = std::ranges::find(kept_, parameterized_.shape, &Kept::shape);
    if (found != kept_.end()) {
        kept_.splice(kept_.begin(), kept_, found);
        return true;
    }
    if (!is_understood(parameterized_.shape)) return false;
    PreparedStatement prepared;
    const int result = prepare_to_keep(database_, parameterized_.shape, prepared);
    if (result == SQLITE_ERROR) return false;  // running the plain text reports what is wrong with it
    if (result != SQLITE_OK) throw sqlite_failure(database_, statement);
    kept_.push_front({parameterized_.shape, std::move(prepared)});
    if (kept_.size() > most_kept) kept_.pop_back();
    return true;
}

void StatementCache::bind_literals(sqlite3_stmt* prepared, const std::string& statement) {
    int position = 0;
    for (const Literal& literal : parameterized_.literals) {
        if (bind(prepared, ++position, literal) != SQLITE_OK) throw sqlite_failure(database_, statement);
    }
}

int StatementCache::bind(sqlite3_stmt* prepared, int position, const Literal& literal) {
    switch (literal.kind) {
        case Literal::Kind::text: return bind_text(prepared, position, literal.spelling);
        case Literal::Kind::integer: return sqlite3_bind_int64(prepared, position, integer_value(literal));
        case Literal::Kind::real: break;
    }
    return sqlite3_bind_double(prepared, position, real_value(literal));
}

double StatementCache::real_value(const Literal& literal) {
    if (number_reader_.get() == nullptr) prepare_to_keep(database_, "select ?", number_reader_);
    bind_text(number_reader_.get(), 1, literal.spelling);
    number_reader_.step("reading a number");
    const double value = sqlite3_column_double(number_reader_.get(), 0);
    sqlite3_reset(number_reader_.get());
    return literal.is_negative ? -value : value;
}

}  // namespace vantlo
