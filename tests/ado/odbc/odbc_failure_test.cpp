#include "ado/odbc/odbc_failure.h"

#include <doctest/doctest.h>

namespace vantlo::test {
namespace {

TEST_CASE("meaning_of knows every engine's states and codes") {
    struct Row {
        const char* engine;
        const char* sql_state;
        std::int32_t native_code;
        FailureMeaning meaning;
    };
    // clang-format off
    const Row rows[] = {
        {"PostgreSQL",  "42P01", 1,    {error::no_such_table,        Remedy::none}},
        {"MariaDB",     "42S02", 1146, {error::no_such_table,        Remedy::none}},
        {"SQL Server",  "42S02", 208,  {error::no_such_table,        Remedy::none}},
        {"PostgreSQL",  "42703", 1,    {error::no_such_column,       Remedy::none}},
        {"MariaDB",     "42S22", 1054, {error::no_such_column,       Remedy::none}},
        {"SQL Server",  "42S22", 207,  {error::no_such_column,       Remedy::none}},
        {"PostgreSQL",  "42601", 1,    {error::syntax_error,         Remedy::none}},
        {"MariaDB",     "42000", 1064, {error::syntax_error,         Remedy::none}},
        {"SQL Server",  "42000", 102,  {error::syntax_error,         Remedy::none}},
        {"PostgreSQL",  "23505", 1,    {error::constraint_violated,  Remedy::save_again}},
        {"MariaDB",     "23000", 1062, {error::constraint_violated,  Remedy::save_again}},
        {"SQL Server",  "23000", 2627, {error::constraint_violated,  Remedy::save_again}},
        {"SQL Server",  "23000", 2601, {error::constraint_violated,  Remedy::save_again}},
        {"PostgreSQL",  "23502", 1,    {error::constraint_violated,  Remedy::none}},
        {"MariaDB",     "23000", 1048, {error::constraint_violated,  Remedy::none}},
        {"SQL Server",  "23000", 515,  {error::constraint_violated,  Remedy::none}},
        {"PostgreSQL",  "40001", 1,    {error::locked_by_another,    Remedy::save_again}},
        {"PostgreSQL",  "40P01", 1,    {error::locked_by_another,    Remedy::save_again}},
        {"MariaDB",     "40001", 1213, {error::locked_by_another,    Remedy::save_again}},
        {"SQL Server",  "40001", 1205, {error::locked_by_another,    Remedy::save_again}},
        {"MariaDB",     "HY000", 1205, {error::time_out,             Remedy::save_again}},
        {"PostgreSQL",  "55P03", 1,    {error::locked_by_another,    Remedy::save_again}},
        {"any",         "HYT00", 0,    {error::time_out,             Remedy::save_again}},
        {"PostgreSQL",  "08S01", 26,   {error::unspecified,          Remedy::connect_again}},
        {"PostgreSQL",  "57P01", 1,    {error::unspecified,          Remedy::connect_again}},
        {"MariaDB",     "08S01", 2013, {error::unspecified,          Remedy::connect_again}},
        {"MariaDB",     "08S01", 1047, {error::unspecified,          Remedy::connect_again}},
        {"MariaDB",     "HY000", 2013, {error::unspecified,          Remedy::connect_again}},
        {"MariaDB",     "HY001", 1047, {error::unspecified,          Remedy::connect_again}},
        {"MariaDB",     "HY001", 1213, {error::locked_by_another,    Remedy::save_again}},
        {"MariaDB",     "HY001", 2006, {error::unspecified,          Remedy::connect_again}},
        {"MariaDB",     "HY001", 2013, {error::unspecified,          Remedy::connect_again}},
        {"SQL Server",  "08S01", 0,    {error::unspecified,          Remedy::connect_again}},
        {"PostgreSQL",  "42501", 1,    {error::permission_denied,    Remedy::none}},
        {"MariaDB",     "42000", 1142, {error::permission_denied,    Remedy::none}},
        {"SQL Server",  "42000", 229,  {error::permission_denied,    Remedy::none}},
        {"PostgreSQL",  "28P01", 0,    {error::login_failed,         Remedy::none}},
        {"MariaDB",     "28000", 1045, {error::login_failed,         Remedy::none}},
        {"SQL Server",  "28000", 18456, {error::login_failed,        Remedy::none}},
        {"PostgreSQL",  "22001", 1,    {error::value_does_not_fit,   Remedy::none}},
        {"MariaDB",     "22001", 1406, {error::value_does_not_fit,   Remedy::none}},
        {"SQL Server",  "22001", 8152, {error::value_does_not_fit,   Remedy::none}},
        {"PostgreSQL",  "22P02", 1,    {error::cannot_convert_value, Remedy::none}},
        {"MariaDB",     "22007", 1366, {error::cannot_convert_value, Remedy::none}},
        {"PostgreSQL",  "25P02", 1,    {error::unspecified,          Remedy::none}},
        {"any",         "HY000", 0,    {error::unspecified,          Remedy::none}},
        {"any",         "",      0,    {error::unspecified,          Remedy::none}},
    };
    // clang-format on
    for (const Row& row : rows) {
        INFO(row.engine << " " << row.sql_state << " " << row.native_code);
        const FailureMeaning meaning = meaning_of(row.sql_state, row.native_code);
        CHECK(meaning.number == row.meaning.number);
        CHECK(meaning.remedy == row.meaning.remedy);
    }
}

}  // namespace
}  // namespace vantlo::test
