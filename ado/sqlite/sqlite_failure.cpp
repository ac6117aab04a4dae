#include "ado/sqlite/sqlite_failure.h"

#include <sqlite3.h>

#include <string>

namespace vantlo {

namespace {

struct MessageRow {
    std::string_view beginning;
    ErrorNumber number;
};

struct CodeRow {
    int code;
    ErrorNumber number;
};

// clang-format off
// beginning of the message beside SQLITE_ERROR,  number
constexpr MessageRow numbers_by_message[] = {
    {"no such table: ",                           error::no_such_table},
    {"no such column: ",                          error::no_such_column},
    {"cannot start a transaction",                error::unspecified},
    {"cannot commit",                             error::unspecified},
};

// result code,                  number; an extended code without a row of its own goes by its primary code
constexpr CodeRow numbers_by_code[] = {
    {SQLITE_ERROR,               error::syntax_error},
    {SQLITE_PERM,                error::permission_denied},
    {SQLITE_BUSY,                error::locked_by_another},
    {SQLITE_BUSY_TIMEOUT,        error::time_out},
    {SQLITE_LOCKED,              error::locked_by_another},
    {SQLITE_NOMEM,               error::out_of_memory},
    {SQLITE_READONLY,            error::permission_denied},
    {SQLITE_IOERR,               error::unspecified},
    {SQLITE_IOERR_NOMEM,         error::out_of_memory},
    {SQLITE_CORRUPT,             error::unspecified},
    {SQLITE_FULL,                error::unspecified},
    {SQLITE_CANTOPEN,            error::unspecified},
    {SQLITE_PROTOCOL,            error::locked_by_another},
    {SQLITE_TOOBIG,              error::value_does_not_fit},
    {SQLITE_CONSTRAINT,          error::constraint_violated},
    {SQLITE_CONSTRAINT_DATATYPE, error::cannot_convert_value},
    {SQLITE_MISMATCH,            error::cannot_convert_value},
    {SQLITE_AUTH,                error::permission_denied},
    {SQLITE_NOTADB,              error::unspecified},
};
// clang-format on

constexpr int primary_code(int code) { return code & 0xFF; }

const CodeRow* row_of(int code) {
    for (const CodeRow& row : numbers_by_code) {
        if (row.code == code) return &row;
    }
    return nullptr;
}

}  // namespace

ErrorNumber sqlite_error_number(int result_code, std::string_view message) {
    if (result_code == SQLITE_ERROR) {
        for (const MessageRow& row : numbers_by_message) {
            if (message.starts_with(row.beginning)) return row.number;
        }
    }
    const CodeRow* row = row_of(result_code);
    if (row == nullptr) row = row_of(primary_code(result_code));
    return row != nullptr ? row->number : error::unspecified;
}

Failure sqlite_failure(sqlite3* database, std::string_view what_was_done) {
    const int code = sqlite3_extended_errcode(database);
    const std::string message = sqlite3_errmsg(database);
    std::string account = "SQLite " + std::to_string(code) + " (" + message + "): ";
    account += what_was_done;
    return {sqlite_error_number(code, message), std::move(account)};
}

}  // namespace vantlo
