#pragma once

#include <string_view>

#include "automation/error.h"

struct sqlite3;

namespace vantlo {

/// The number that ADO would report for an SQLite result code, extended or not, and the engine's message beside it.
///
/// Source   SQLite answers a misspelt table with the same code as a syntax error; only its message, which is English
///          whatever the locale, tells them apart.
ErrorNumber sqlite_error_number(int result_code, std::string_view message);

/// The failure that a connection's latest call ended in, and what was being done, in UTF-8.
/// Example  `SQLite 1 (no such table: Ledger): select * from Ledger`
Failure sqlite_failure(sqlite3* database, std::string_view what_was_done);

}  // namespace vantlo
