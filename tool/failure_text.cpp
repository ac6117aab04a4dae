#include "tool/failure_text.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>

namespace vantlo {

namespace words {

// clang-format off
constexpr Message no_file          = {"没有数据库文件 {}；vantlo init 建立新的数据库", "there is no database file {}; vantlo init makes a new one"};
constexpr Message no_folder        = {"没有文件夹 {}", "there is no folder {}"};
constexpr Message is_folder        = {"{} 是文件夹，不是数据库文件", "{} is a folder, not a database file"};
constexpr Message not_opened       = {"无法打开 {}：没有权限", "{} cannot be opened: there is no right to"};
constexpr Message no_sqlite_file   = {"{} 不是 SQLite 数据库", "{} is not an SQLite database"};
constexpr Message no_table         = {"数据库中没有表 {}。vantlo init 为新的商店建立所有数据表；数据库属于主机时，vantlo adopt 建立缺少的部分。",
                                      "the database has no table {}. vantlo init makes all tables of a new shop; where the database is a host's, vantlo adopt makes what is missing."};
constexpr Message no_column        = {"表 {} 中没有列 {}。vantlo init 补上较早版本的表缺少的列；数据库属于主机时，vantlo adopt --dry-run 显示缺少什么。",
                                      "the table {} has no column {}. vantlo init adds what tables of an earlier version lack; where the database is a host's, vantlo adopt --dry-run shows what is missing."};
constexpr Message some_table       = {"（未指明）", "(not named)"};
constexpr Message is_locked        = {"其他程序占用着数据库，请稍后再试", "another program has the database locked; try again once it is done"};
constexpr Message database_says    = {"{}（数据库原文：{}）", "{} (the database says: {})"};
// clang-format on

}  // namespace words

namespace {

/// What stands between two texts; nothing if they do not follow each other.
std::optional<std::string> between(std::string_view text, std::string_view before, std::string_view after) {
    const std::size_t begin = text.find(before);
    if (begin == std::string_view::npos) return std::nullopt;
    const std::size_t start = begin + before.size();
    const std::size_t end = text.find(after, start);
    if (end == std::string_view::npos) return std::nullopt;
    return std::string(text.substr(start, end - start));
}

struct Enclosed {
    std::string_view before, after;
};

// SQLite, PostgreSQL, MariaDB, SQL Server; the last row is the recordset's own.
constexpr Enclosed around_table[] = {{"no such table: ", ")"},
                                     {"relation \"", "\" does not exist"},
                                     {"Table '", "' doesn't exist"},
                                     {"Invalid object name '", "'"}};
constexpr Enclosed around_column[] = {{"no such column: ", ")"},       {"has no column named ", ")"},
                                      {"column \"", "\" of relation"}, {"column \"", "\" does not exist"},
                                      {"column ", " does not exist"},  {"Unknown column '", "'"},
                                      {"Invalid column name '", "'"},  {"no field ", " in the result of: "}};

/// The name that a text of the database has at one of the places, without what stands before a point.
template <std::size_t rows>
std::optional<std::string> name_in(std::string_view text, const Enclosed (&places)[rows]) {
    for (const Enclosed& place : places) {
        if (const auto name = between(text, place.before, place.after)) {
            const std::size_t point = name->rfind('.');
            return point == std::string::npos ? *name : name->substr(point + 1);
        }
    }
    return std::nullopt;
}

/// The table that a statement in a text is about: the first name behind `from`, `into` or `update`.
std::optional<std::string> table_of_statement(std::string_view text) {
    std::size_t first = std::string_view::npos;
    std::string table;
    for (const std::string_view word : {" from ", "insert into ", "update "}) {
        const std::size_t found = text.find(word);
        if (found == std::string_view::npos || found >= first) continue;
        first = found;
        const std::size_t start = found + word.size();
        table = std::string(text.substr(start, text.find_first_of(" (,;", start) - start));
    }
    if (table.empty()) return std::nullopt;
    return table;
}

/// What keeps an SQLite file from being opened; nothing if it is none, or cannot be told.
std::optional<std::string> fault_of_file(const Failure& failure, const CommonOptions& common, bool creates) {
    const std::string_view what = failure.what();
    const auto file = between(std::string(what) + "\n", "(unable to open database file): opening ", "\n");
    std::error_code ignored;
    if (file) {
        const std::filesystem::path folder = std::filesystem::path(*file).parent_path();
        if (std::filesystem::is_directory(*file, ignored)) return common.say(words::is_folder, *file);
        if (!folder.empty() && !std::filesystem::is_directory(folder, ignored) &&
            !std::filesystem::exists(*file, ignored))
            return common.say(words::no_folder, folder.string());
        const bool is_there = std::filesystem::exists(*file, ignored);
        return common.say(is_there || creates ? words::not_opened : words::no_file, *file);
    }
    constexpr std::string_view sqlite = "sqlite:";
    const std::string database = common.connection_texts().front();
    if (what.find("(file is not a database)") != std::string_view::npos && database.starts_with(sqlite))
        return common.say(words::no_sqlite_file, database.substr(sqlite.size()));
    return std::nullopt;
}

/// What is not there. Nothing if the failure says nothing of the kind.
std::optional<std::string> what_is_missing(const Failure& failure, const CommonOptions& common) {
    const std::string_view what = failure.what();
    if (const auto column = name_in(what, around_column)) {
        const auto table = between(what, "table ", " has no column named ");
        return common.say(words::no_column,
                          table ? *table : table_of_statement(what).value_or(common.say(words::some_table)), *column);
    }
    if (const auto table = name_in(what, around_table)) return common.say(words::no_table, *table);
    return std::nullopt;
}

/// The bill at hand, which bookkeeping puts in front of what the database says.
std::string place_of(const std::string& what) {
    for (const std::string_view beginning : {"SQLite ", "ODBC ", "no field "}) {
        if (const std::size_t found = what.find(beginning); found != std::string::npos) return what.substr(0, found);
    }
    return "";
}

}  // namespace

std::string failure_text(const Failure& failure, const CommonOptions& common, bool creates) {
    const std::string what = failure.what();
    if (what.empty()) return account_of(failure, common.language);
    if (const auto fault = fault_of_file(failure, common, creates)) return *fault;
    if (const auto missing = what_is_missing(failure, common)) return place_of(what) + *missing;
    if (failure.number() == error::locked_by_another || failure.number() == error::time_out)
        return common.say(words::database_says, common.say(words::is_locked), what);
    if (common.language == Language::english) return what;
    return common.say(words::database_says, to_utf8(standard_text(failure.number(), common.language)), what);
}
}  // namespace vantlo
