#include "ado/odbc/engine.h"

namespace vantlo {

namespace {

// Two backslashes and, where the engine promises all of Unicode, a character beyond the basic plane with its length.
// SQL Server keeps only the characters of its database's collation in a literal without the N prefix.
constexpr const char16_t* full_probe = u"select '\\\\' as a, '𠮷' as b, char_length('𠮷') as c";
constexpr const char16_t* backslash_probe = u"select '\\\\' as a";

// MariaDB's driver refuses `set names`. Strict mode: a text that is too long fails instead of becoming another key.
constexpr const char16_t* mariadb_characters =
    u"set character_set_client = utf8mb4, character_set_results = utf8mb4, collation_connection = utf8mb4_bin";
constexpr const char16_t* mariadb_mode = u"set sql_mode = concat(@@sql_mode, ',STRICT_ALL_TABLES')";

constexpr const char16_t* galera = u"show variables like 'wsrep_on'";

// PostgreSQL's last setting: real numbers come back with all their digits.
// clang-format off
// name,           dialect,      settings,                               probe,           cluster probe
constexpr Engine engines[] = {
    {"PostgreSQL", "postgresql", {u"set client_encoding to 'UTF8'",
                                  u"set standard_conforming_strings to on",
                                  u"set extra_float_digits to 3"},       full_probe,      nullptr},
    {"MariaDB",    "mariadb",    {mariadb_characters, mariadb_mode},     full_probe,      galera},
    {"SQL Server", "sqlserver",  {u"set dateformat ymd"},                backslash_probe, nullptr},
    {"ACCESS",     "access",     {},                                     backslash_probe, nullptr},
    {"",           "unknown",    {},                                     backslash_probe, nullptr},
};
// clang-format on

}  // namespace

const Engine& engine_named(std::string_view name) {
    const Engine* engine = engines;
    while (name.find(engine->name) == std::string_view::npos) ++engine;
    return *engine;
}

std::string literal_hazard(const std::vector<Variant>& probed) {
    if (probed.at(0) != Variant(u"\\\\"))
        return "takes a backslash for an escape, with which a text can leave its literal";
    if (probed.size() > 1 && (probed.at(1) != Variant(u"𠮷") || to_long(probed.at(2)) != 1)) {
        return "does not bring every character back; the database's character set has to be UTF8 or utf8mb4";
    }
    return {};
}

}  // namespace vantlo
