#include "ado/sqlite/sqlite_connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "ado/sqlite/declared_type.h"
#include "ado/sqlite/sqlite_failure.h"
#include "ado/statement_text.h"

namespace vantlo {

namespace {

struct Finalizer {
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using PreparedStatement = std::unique_ptr<sqlite3_stmt, Finalizer>;

// The text from its first word on: without the blanks, comments and semicolons before it.
std::string_view from_first_word(std::string_view text) {
    while (!text.empty()) {
        std::size_t last = 0;
        if (text.starts_with("--")) {
            last = text.find('\n');
        } else if (text.starts_with("/*")) {
            last = text.find("*/", 2);
            if (last != std::string_view::npos) ++last;
        } else if (std::string_view(" \t\n\f\r;").find(text.front()) == std::string_view::npos) {
            return text;
        }
        if (last == std::string_view::npos) last = text.size() - 1;  // a comment up to the end
        text.remove_prefix(last + 1);
    }
    return text;
}

// Prepares the first statement of a text, or none if there is none, and moves the text past it.
// Returns the engine's result code.
int prepare_next(sqlite3* database, const char*& text, PreparedStatement& prepared) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(database, text, -1, &statement, &text);
    prepared.reset(statement);
    return result;
}

// Whether there is a row to read.
bool step(sqlite3_stmt* statement) {
    switch (sqlite3_step(statement)) {
        case SQLITE_ROW: return true;
        case SQLITE_DONE: return false;
        default: throw sqlite_failure(sqlite3_db_handle(statement), sqlite3_sql(statement));
    }
}

void run_to_end(sqlite3_stmt* statement) {
    while (step(statement)) {
    }
}

Text column_text(sqlite3_stmt* statement, int column) {
    const void* const bytes = sqlite3_column_text(statement, column);
    if (bytes == nullptr) throw std::bad_alloc();  // a text is never absent otherwise
    return from_utf8(
        {static_cast<const char*>(bytes), static_cast<std::size_t>(sqlite3_column_bytes(statement, column))});
}

Variant read_field(sqlite3_stmt* statement, int column, DeclaredType type) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL: return Null{};
        case SQLITE_INTEGER: return field_value(type, std::int64_t{sqlite3_column_int64(statement, column)});
        case SQLITE_FLOAT: return field_value(type, sqlite3_column_double(statement, column));
        case SQLITE_TEXT: return field_value(type, column_text(statement, column));
        default: return Other{};
    }
}

ResultTable read_to_end(sqlite3_stmt* statement) {
    const int count = sqlite3_column_count(statement);
    ResultTable result;
    result.yields_rows = count != 0;

    std::vector<DeclaredType> types;
    for (int column = 0; column < count; ++column) {
        const char* const name = sqlite3_column_name(statement, column);
        if (name == nullptr) throw std::bad_alloc();
        result.columns.push_back(from_utf8(name));
        const char* const declaration = sqlite3_column_decltype(statement, column);
        types.push_back(declared_type(declaration != nullptr ? declaration : ""));
    }
    while (step(statement)) {
        std::vector<Variant>& row = result.rows.emplace_back();
        row.reserve(types.size());
        for (int column = 0; column < count; ++column) {
            row.push_back(read_field(statement, column, types[static_cast<std::size_t>(column)]));
        }
    }
    return result;
}

}  // namespace

void SqliteConnection::Closer::operator()(sqlite3* database) const noexcept { sqlite3_close(database); }

SqliteConnection::SqliteConnection(const std::string& file, const SqliteOptions& options) {
    // The engine would take an empty name for a temporary database and forget all of it at the end.
    if (file.empty()) throw Failure(error::bad_argument, "the name of the database file is empty");

    sqlite3* database = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE |
                      (options.may_create ? SQLITE_OPEN_CREATE : 0);
    const int result = sqlite3_open_v2(file.c_str(), &database, flags, nullptr);
    database_.reset(database);
    if (result != SQLITE_OK) throw sqlite_failure(database, "opening " + file);

    sqlite3_busy_timeout(database, static_cast<int>(options.busy_time_out.count()));
    // Otherwise a misspelt name in double quotes counts as a text.
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    run_script("pragma journal_mode = wal; pragma synchronous = full;");
}

ResultTable SqliteConnection::run(TextView statement) {
    // Texts go through the narrow functions: the wide ones turn U+FFFE and U+FFFF into U+FFFD on reading.
    const std::string text = checked_utf8(statement);
    const char* rest = text.c_str();
    PreparedStatement prepared;
    if (prepare_next(database_.get(), rest, prepared) != SQLITE_OK) throw sqlite_failure(database_.get(), text);
    if (prepared == nullptr) throw Failure(error::syntax_error, "the statement is empty");
    if (!from_first_word(rest).empty())
        throw Failure(error::syntax_error, "one call runs one statement, not several: " + text);
    return read_to_end(prepared.get());
}

void SqliteConnection::begin() { run_script("begin immediate"); }

void SqliteConnection::commit() { run_script("commit"); }

void SqliteConnection::roll_back() {
    if (sqlite3_get_autocommit(database_.get()) == 0) run_script("rollback");
}

Remedy SqliteConnection::remedy() const {
    const int code = sqlite3_errcode(database_.get()) & 0xFF;
    return code == SQLITE_BUSY || code == SQLITE_LOCKED ? Remedy::save_again : Remedy::none;
}

std::string SqliteConnection::engine() const { return std::string("SQLite ") + sqlite3_libversion(); }

void SqliteConnection::run_script(const std::string& script) {
    const char* rest = script.c_str();
    while (*rest != '\0') {
        const char* const beginning = from_first_word(rest).data();
        PreparedStatement prepared;
        if (prepare_next(database_.get(), rest, prepared) != SQLITE_OK) {
            const auto line = 1 + std::count(script.c_str(), beginning, '\n');
            throw sqlite_failure(database_.get(), "the statement on line " + std::to_string(line) + " of the script");
        }
        if (prepared != nullptr) run_to_end(prepared.get());
    }
}

}  // namespace vantlo
