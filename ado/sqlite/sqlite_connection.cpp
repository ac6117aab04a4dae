#include "ado/sqlite/sqlite_connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "ado/native/adapters.h"
#include "ado/native/statement_text.h"
#include "ado/sqlite/open_file.h"
#include "ado/sqlite/prepared_statement.h"
#include "ado/sqlite/sqlite_failure.h"

namespace vantlo {

namespace {

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
    prepared = PreparedStatement(statement);
    return result;
}

void run_to_end(PreparedStatement& prepared) {
    while (prepared.step(sqlite3_sql(prepared.get()))) {
    }
}

/// Turns the write-ahead log on. That needs an exclusive lock for a moment: of several connections at the same time, SQLite
/// refuses all but one without waiting.
int switch_to_wal(sqlite3* database, std::chrono::milliseconds time_limit) {
    constexpr std::chrono::milliseconds pause(5);
    const auto end = std::chrono::steady_clock::now() + time_limit;
    while (true) {
        const int result = sqlite3_exec(database, "pragma journal_mode = wal", nullptr, nullptr, nullptr);
        const bool is_busy = (result & 0xFF) == SQLITE_BUSY;
        if (!is_busy || std::chrono::steady_clock::now() > end) return result;
        std::this_thread::sleep_for(pause);
    }
}

}  // namespace

SqliteConnection::SqliteConnection(const std::string& file, const SqliteOptions& options)
    : is_for_reading_(options.is_for_reading) {
    // The engine would take an empty name for a temporary database and forget all of it at the end.
    if (file.empty()) throw Failure(error::bad_argument, "the name of the database file is empty");

    database_ = is_for_reading_
                    ? open_file_for_reading(file)
                    : open_file(file, SQLITE_OPEN_READWRITE | (options.may_create ? SQLITE_OPEN_CREATE : 0));
    sqlite3* const database = database_.get();
    sqlite3_busy_timeout(database, static_cast<int>(options.busy_time_out.count()));
    // Otherwise a misspelt name in double quotes counts as a text.
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    if (is_for_reading_) {
        run_script("pragma query_only = on");
    } else {
        if (switch_to_wal(database, options.busy_time_out) != SQLITE_OK)
            throw sqlite_failure(database, "opening " + file);
        run_script("pragma synchronous = full");
    }
    if (options.parameterizes_literals) statement_cache_.emplace(database);
}

ResultTable SqliteConnection::run(TextView statement) {
    // Texts go through the narrow functions: the wide ones turn U+FFFE and U+FFFF into U+FFFD on reading.
    const std::string text = checked_utf8(statement);
    if (statement_cache_) {
        if (std::optional<ResultTable> result = statement_cache_->run(text)) return *std::move(result);
    }
    const char* rest = text.c_str();
    PreparedStatement prepared;
    if (prepare_next(database_.get(), rest, prepared) != SQLITE_OK) throw sqlite_failure(database_.get(), text);
    if (prepared.get() == nullptr) throw Failure(error::syntax_error, "the statement is empty");
    if (!from_first_word(rest).empty())
        throw Failure(error::syntax_error, "one call runs one statement, not several: " + text);
    return prepared.read_to_end(sqlite3_sql(prepared.get()));
}

void SqliteConnection::begin() { run_script(is_for_reading_ ? "begin" : "begin immediate"); }

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
        if (prepared.get() != nullptr) run_to_end(prepared);
    }
}

Owned<NativeConnection> open_sqlite(std::string_view file, bool may_create) {
    return Owned<NativeConnection>(new SqliteConnection(std::string(file), {.may_create = may_create}));
}

Owned<NativeConnection> open_sqlite_for_reading(std::string_view file) {
    return Owned<NativeConnection>(new SqliteConnection(std::string(file), {.is_for_reading = true}));
}

}  // namespace vantlo
