#pragma once

#include <string>
#include <vector>

#include "ado/native/native_connection.h"

namespace vantlo {

/// The tables of the system, as the schema of a dialect makes them. Errors: std::runtime_error for a dialect without one.
std::vector<std::string> system_tables(std::string_view dialect);

/// A column that a table of vantlo's own lacks, since an earlier version made the table, and the statement that adds it.
struct MissingColumn {
    std::string table;
    std::string column;
    std::string statement;
};

/// What the tables of vantlo's own lack; a table that is not there lacks nothing. Errors   Failure.
std::vector<MissingColumn> missing_own_columns(NativeConnection& database);

/// A table of the system whose storage engine keeps what a transaction rolls back.
struct TableWithoutRollback {
    std::string table;
    std::string engine;
};

/// Errors   Failure.
std::vector<TableWithoutRollback> tables_without_rollback(NativeConnection& database);

}  // namespace vantlo
