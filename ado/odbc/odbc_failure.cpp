#include "ado/odbc/odbc_failure.h"

#include <sql.h>
#include <sqlext.h>

#include <optional>

namespace vantlo {

namespace {

struct MeaningRow {
    std::string_view state;  // how the SQLSTATE begins
    std::optional<std::int32_t> native_code;
    FailureMeaning meaning;
};

// clang-format off
// The first row that fits counts. Native codes: 1022, 1062 and 1205 to 2013 beside HY000 and 08S01 are MariaDB's (1047: a
// cluster node that is not ready); 2601, 2627 and those of the second table SQL Server's; states with letters in the middle
// are PostgreSQL's.
//   SQLSTATE,  native code,  number,                       remedy
constexpr MeaningRow meanings[] = {
    {"40001",   {},           {error::locked_by_another,    Remedy::save_again}},     // deadlock, serialization failure
    {"40P01",   {},           {error::locked_by_another,    Remedy::save_again}},     // deadlock
    {"40",      {},           {error::unspecified,          Remedy::save_again}},     // rolled back for another reason
    {"55P03",   {},           {error::locked_by_another,    Remedy::save_again}},     // a lock that was not waited for
    {"HY000",   1205,         {error::time_out,             Remedy::save_again}},     // waited too long for a lock
    {"HY000",   1020,         {error::locked_by_another,    Remedy::save_again}},     // changed since it was read
    {"HY000",   2006,         {error::unspecified,          Remedy::connect_again}},  // the server has gone away
    {"HY000",   2013,         {error::unspecified,          Remedy::connect_again}},  // lost during the statement
    {"08004",   1040,         {error::unspecified,          Remedy::connect_again}},  // too many connections
    {"08",      {},           {error::unspecified,          Remedy::connect_again}},
    {"57P",     {},           {error::unspecified,          Remedy::connect_again}},  // the server is shut down
    {"23505",   {},           {error::constraint_violated,  Remedy::save_again}},     // the key has come meanwhile
    {"23000",   1022,         {error::constraint_violated,  Remedy::save_again}},
    {"23000",   1062,         {error::constraint_violated,  Remedy::save_again}},
    {"23000",   2601,         {error::constraint_violated,  Remedy::save_again}},
    {"23000",   2627,         {error::constraint_violated,  Remedy::save_again}},
    {"23",      {},           {error::constraint_violated,  Remedy::none}},
    {"42S02",   {},           {error::no_such_table,        Remedy::none}},
    {"42P01",   {},           {error::no_such_table,        Remedy::none}},
    {"S0002",   {},           {error::no_such_table,        Remedy::none}},
    {"42S22",   {},           {error::no_such_column,       Remedy::none}},
    {"42703",   {},           {error::no_such_column,       Remedy::none}},
    {"07",      {},           {error::no_such_column,       Remedy::none}},           // a name taken for a parameter
    {"42501",   {},           {error::permission_denied,    Remedy::none}},
    {"42000",   1044,         {error::permission_denied,    Remedy::none}},           // MariaDB: the database
    {"42000",   1142,         {error::permission_denied,    Remedy::none}},           // the table
    {"42000",   1143,         {error::permission_denied,    Remedy::none}},           // the column
    {"25006",   {},           {error::permission_denied,    Remedy::none}},           // a read-only transaction
    {"HY000",   1290,         {error::permission_denied,    Remedy::none}},           // MariaDB: a read-only server
    {"42804",   {},           {error::cannot_convert_value, Remedy::none}},
    {"42",      {},           {error::syntax_error,         Remedy::none}},
    {"37000",   {},           {error::syntax_error,         Remedy::none}},
    {"22001",   {},           {error::value_does_not_fit,   Remedy::none}},
    {"22003",   {},           {error::value_does_not_fit,   Remedy::none}},
    {"22",      {},           {error::cannot_convert_value, Remedy::none}},
    {"28",      {},           {error::login_failed,         Remedy::none}},
    {"HYT",     {},           {error::time_out,             Remedy::save_again}},
    {"HY001",   1047,         {error::unspecified,          Remedy::connect_again}},  // the state of all that goes wrong
    {"HY001",   1213,         {error::locked_by_another,    Remedy::save_again}},     // while MariaDB's driver changes
    {"HY001",   2006,         {error::unspecified,          Remedy::connect_again}},  // autocommit
    {"HY001",   2013,         {error::unspecified,          Remedy::connect_again}},
    {"HY001",   {},           {error::out_of_memory,        Remedy::none}},
};

// SQL Server's own numbers, where FreeTDS has no SQLSTATE of theirs: it calls every such error 42000, a syntax error.
// Source   the server's public list of errors, for what a posting can meet.
//   native code,  number,                       remedy
constexpr struct {
    std::int32_t native_code;
    FailureMeaning meaning;
} sqlserver_meanings[] = {
    {1205,           {error::locked_by_another,    Remedy::save_again}},     // deadlock
    {3960,           {error::locked_by_another,    Remedy::save_again}},     // snapshot update conflict
    {1222,           {error::time_out,             Remedy::save_again}},     // waited too long for a lock
    {596,            {error::unspecified,          Remedy::connect_again}},  // the session is being ended
    {6005,           {error::unspecified,          Remedy::connect_again}},  // the server is shutting down
    {17142,          {error::unspecified,          Remedy::connect_again}},  // the server is paused
    {207,            {error::no_such_column,       Remedy::none}},
    {208,            {error::no_such_table,        Remedy::none}},
    {229,            {error::permission_denied,    Remedy::none}},           // the object
    {230,            {error::permission_denied,    Remedy::none}},           // the column
    {262,            {error::permission_denied,    Remedy::none}},           // making tables
    {916,            {error::permission_denied,    Remedy::none}},           // the database
    {3906,           {error::permission_denied,    Remedy::none}},           // a read-only database
    {4060,           {error::login_failed,         Remedy::none}},           // no such database, or not for this login
    {18456,          {error::login_failed,         Remedy::none}},
    {220,            {error::value_does_not_fit,   Remedy::none}},           // overflow of a small type
    {2628,           {error::value_does_not_fit,   Remedy::none}},           // too long, since 2019
    {8115,           {error::value_does_not_fit,   Remedy::none}},           // overflow
    {8152,           {error::value_does_not_fit,   Remedy::none}},           // too long
    {241,            {error::cannot_convert_value, Remedy::none}},           // text to date
    {242,            {error::cannot_convert_value, Remedy::none}},           // a date out of range
    {245,            {error::cannot_convert_value, Remedy::none}},           // text to whole number
    {8114,           {error::cannot_convert_value, Remedy::none}},           // text to another number
    {515,            {error::constraint_violated,  Remedy::none}},           // null
    {547,            {error::constraint_violated,  Remedy::none}},           // check or foreign key
    {1105,           {error::unspecified,          Remedy::none}},           // the disk is full
    {9002,           {error::unspecified,          Remedy::none}},           // the log is full
    {50000,          {error::unspecified,          Remedy::none}},           // raised by a trigger
};
// clang-format on

/// The states that say less than the number: of everything that FreeTDS knows no state of, of an overflow, of what a
/// transaction cannot do.
bool is_catch_all(std::string_view sql_state) {
    return sql_state == "42000" || sql_state == "HY019" || sql_state == "25000";
}

bool fits(const MeaningRow& row, std::string_view sql_state, std::int32_t native_code) {
    return sql_state.starts_with(row.state) && row.native_code.value_or(native_code) == native_code;
}

}  // namespace

FailureMeaning meaning_of(std::string_view sql_state, std::int32_t native_code) {
    for (const auto& [code, meaning] : sqlserver_meanings) {
        if (is_catch_all(sql_state) && code == native_code) return meaning;
    }
    for (const MeaningRow& row : meanings) {
        if (fits(row, sql_state, native_code)) return row.meaning;
    }
    return {error::unspecified, Remedy::none};
}

OdbcFailure odbc_failure(std::int16_t handle_type, void* handle, std::string_view what_was_done) {
    SQLCHAR state[SQL_SQLSTATE_SIZE + 1] = "";
    SQLCHAR message[2048] = "";
    SQLINTEGER native_code = 0;
    SQLSMALLINT length = 0;
    SQLGetDiagRec(handle_type, handle, 1, state, &native_code, message, sizeof message, &length);

    const std::string sql_state = reinterpret_cast<const char*>(state);
    std::string account = "ODBC " + sql_state + " " + std::to_string(native_code) + " (";
    account += reinterpret_cast<const char*>(message);
    account += "): ";
    account += what_was_done;
    return {meaning_of(sql_state, native_code), std::move(account)};
}

}  // namespace vantlo
