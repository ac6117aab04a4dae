#include "ado/native/dialect.h"

#include <algorithm>
#include <iterator>

namespace vantlo {

namespace {

constexpr auto sql_server_dates = u"[Microsoft SQL Server]";  // 'yyyy-mm-dd', which every engine but Access reads
constexpr auto access_dates = u"[Microsoft Access]";

constexpr auto no_backslash_escapes = u"set sql_mode=concat(@@sql_mode,',NO_BACKSLASH_ESCAPES')";

constexpr auto sqlite_columns =
    u"select t.name as T,c.name as C,c.type as Y,'' as S from sqlite_schema t join pragma_table_info(t.name) c "
    u"where t.type='table'";

constexpr auto postgresql_columns =
    u"select table_name as T,column_name as C,"
    u"case when data_type='numeric' then 'numeric('||coalesce(numeric_precision,0)||','||"
    u"coalesce(numeric_scale,4)||')' else data_type end as Y,"
    u"case when character_maximum_length is null then '' else database_encoding.S end as S "
    u"from information_schema.columns,"
    u"(select pg_encoding_to_char(encoding) as S from pg_database where datname=current_database()) "
    u"as database_encoding where table_schema=current_schema()";

constexpr auto mariadb_columns =
    u"select table_name as T,column_name as C,"
    u"case when data_type='decimal' then column_type else data_type end as Y,"
    u"coalesce(character_set_name,'') as S from information_schema.columns where table_schema=database()";

constexpr auto mariadb_without_rollback =
    u"select t.table_name as T,t.engine as E from information_schema.tables t join information_schema.engines e "
    u"on e.engine=t.engine where t.table_schema=database() and e.transactions<>'YES'";

constexpr auto sqlserver_columns =
    u"select table_name as T,column_name as C,"
    u"case when data_type in ('decimal','numeric') then concat(data_type,'(',numeric_precision,',',"
    u"numeric_scale,')') else data_type end as Y,"
    u"case when data_type in ('nvarchar','nchar','ntext') then '' else coalesce(collation_name,'') end as S "
    u"from information_schema.columns";

constexpr auto postgresql_lock = u"lock table Inventory in share row exclusive mode";
constexpr auto mariadb_lock = u"select count(*) as n from Inventory for update";
constexpr auto sqlserver_lock = u"select count(*) as n from Inventory with (tablockx, holdlock)";
constexpr auto plain_begin = u"begin";  // of SQLite, where the first read sets the state
constexpr auto repeatable_read = u"begin isolation level repeatable read read only";
constexpr auto consistent_snapshot = u"start transaction with consistent snapshot, read only";

constexpr auto plain_sum = u"sum(?)";
constexpr auto sum_of_ten_thousandths = u"sum(cast(round(coalesce(?,0)*10000) as integer))/10000.0";

constexpr auto sqlite_day = u"date(?,'localtime')";
constexpr auto postgresql_day = u"to_char(?,'YYYY-MM-DD')";
constexpr auto mariadb_day = u"date_format(?,'%Y-%m-%d')";
constexpr auto sqlserver_day = u"convert(varchar(10),?,120)";

constexpr std::string_view delete_all = "delete from Inventory";
constexpr std::string_view truncate = "truncate table Inventory";

// clang-format off
constexpr Dialect rows[] = {
    // name        -- is a comment            dates             transaction of a script           snapshot             backslashes           quote empty ledger embedded exact sum               day of the clock UTC   columns             without rollback          lock of the ledger
    {"sqlite",     CommentRule::anywhere,     sql_server_dates, "begin;\n",             "commit;\n", plain_begin,         nullptr,              u'"', delete_all,  true,  sum_of_ten_thousandths, sqlite_day,      true,  sqlite_columns,     nullptr,                  nullptr},
    {"postgresql", CommentRule::anywhere,     sql_server_dates, "begin;\n",             "commit;\n", repeatable_read,     nullptr,              u'"', truncate,    false, plain_sum,              postgresql_day,  false, postgresql_columns, nullptr,                  postgresql_lock},
    {"mariadb",    CommentRule::before_blank, sql_server_dates, "begin;\n",             "commit;\n", consistent_snapshot, no_backslash_escapes, u'`', truncate,    false, plain_sum,              mariadb_day,     false, mariadb_columns,    mariadb_without_rollback, mariadb_lock},
    {"sqlserver",  CommentRule::anywhere,     sql_server_dates, "begin transaction;\n", "commit;\n", nullptr,             nullptr,              u'"', truncate,    false, plain_sum,              sqlserver_day,   false, sqlserver_columns,  nullptr,                  sqlserver_lock},
    {"access",     CommentRule::nowhere,      access_dates,     "",                     "",          nullptr,             nullptr,              u'`', delete_all,  false, plain_sum,              sqlserver_day,   false, nullptr,            nullptr,                  nullptr},
    {"unknown",    CommentRule::anywhere,     sql_server_dates, "begin;\n",             "commit;\n", nullptr,             nullptr,              u'"', delete_all,  false, plain_sum,              sqlserver_day,   false, nullptr,            nullptr,                  nullptr},
};
// clang-format on

}  // namespace

std::span<const Dialect> dialects() { return rows; }

const Dialect& dialect_named(std::string_view name) {
    const Dialect* const row = std::ranges::find(rows, name, &Dialect::name);
    return row != std::end(rows) ? *row : rows[std::size(rows) - 1];
}

}  // namespace vantlo
