#include "ado/odbc/engine.h"

namespace vantlo {

namespace {

// Row-level security: a select that a policy would shorten fails instead. Real numbers come back with all their digits.
// A transaction that only reads accepts all of them, and one statement asks the server once.
constexpr const char16_t* postgresql_settings[] = {
    u"select set_config('client_encoding','UTF8',false),set_config('standard_conforming_strings','on',false),"
    u"set_config('extra_float_digits','3',false),set_config('row_security','off',false),"
    u"set_config('transform_null_equals','off',false)",
};

// The driver refuses `set names`. Strict mode: a text that is too long fails instead of becoming another key. Other modes
// would make '' null, or join texts where conditions are joined. A limit on the rows of selects would shorten each, and a
// completion type other than 0 would begin the next transaction, which nobody commits.
constexpr const char16_t* mariadb_settings[] = {
    u"set character_set_client=utf8mb4,character_set_results=utf8mb4,collation_connection=utf8mb4_bin,"
    u"sql_mode='NO_BACKSLASH_ESCAPES,STRICT_ALL_TABLES,NO_ENGINE_SUBSTITUTION',"
    u"sql_select_limit=18446744073709551615,sql_big_selects=1,sql_safe_updates=0,sql_auto_is_null=0,"
    u"completion_type=0,unique_checks=1,foreign_key_checks=1,check_constraint_checks=1,"
    u"tx_isolation=if(@@tx_isolation='READ-UNCOMMITTED','READ-COMMITTED',@@tx_isolation)",
};

constexpr const char16_t* sqlserver_settings[] = {u"set dateformat ymd", u"set rowcount 0", u"set textsize 2147483647"};

constexpr std::string_view escape = "takes a backslash for an escape, with which a text can leave its literal";
constexpr std::string_view lost_characters =
    "does not bring every character back; the database's character set has to be UTF8 or utf8mb4";
constexpr std::string_view lost_on_the_way =
    "gets other characters than are sent; the connection string needs ClientCharset=UTF-8";
constexpr std::string_view lost_in_literals =
    "loses Chinese characters in literals without the N prefix, which are converted to the code page of the database's "
    "collation; the database needs a Chinese collation or one whose name ends in _UTF8";
constexpr std::string_view line_breaks = "changes line breaks in texts; the connection string needs LFConversion=0";
constexpr std::string_view no_triggers =
    "runs no triggers for this user (session_replication_role is replica), so that the journal of movements would miss "
    "what is posted";

constexpr Probe backslash = {u"select '\\\\' as a", u"\\\\", escape};
/// A character beyond the basic plane, and its length.
constexpr Probe character = {u"select '𠮷' as a", u"𠮷", lost_characters};
constexpr Probe character_length = {u"select char_length('𠮷') as a", u"1", lost_characters};

constexpr Probe postgresql_probes[] = {
    backslash,
    {u"show server_encoding", u"UTF8", lost_characters},
    character,
    character_length,
    {u"select 'a\nb' as a", u"a\nb", line_breaks},
    {u"select case current_setting('session_replication_role') when 'replica' then 'none' else 'all' end as a", u"all",
     no_triggers},
};
constexpr Probe mariadb_probes[] = {backslash, character, character_length};
constexpr Probe sqlserver_probes[] = {
    backslash,
    {u"select unicode(N'仓') as a", u"20179", lost_on_the_way},
    {u"select unicode('仓') as a", u"20179", lost_in_literals},
};
constexpr Probe other_probes[] = {backslash};

constexpr const char16_t* galera = u"show variables like 'wsrep_on'";

// name, dialect, settings, probes, cluster probe
constexpr Engine engines[] = {
    {"PostgreSQL", "postgresql", postgresql_settings, postgresql_probes, nullptr},
    {"MariaDB", "mariadb", mariadb_settings, mariadb_probes, galera},
    {"SQL Server", "sqlserver", sqlserver_settings, sqlserver_probes, nullptr},
    {"ACCESS", "access", {}, other_probes, nullptr},
    {"", "unknown", {}, other_probes, nullptr},
};

}  // namespace

const Engine& engine_named(std::string_view name) {
    const Engine* engine = engines;
    while (name.find(engine->name) == std::string_view::npos) ++engine;
    return *engine;
}

}  // namespace vantlo
