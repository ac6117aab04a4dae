#include <filesystem>
#include <iostream>

#include "ado/sqlite/online_copy.h"
#include "output/replace_file.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message backup_about   = {"在他人继续使用时，将 SQLite 数据库完整复制到文件", "Copy an SQLite database to a file, whole, while others go on using it"};
constexpr Message backup_file    = {"副本的文件名", "The file to make"};
constexpr Message backup_replace = {"文件已存在且是 SQLite 数据库时予以替换", "Replace the file if it is there and is an SQLite database"};
constexpr Message backup_example = {"每天留一份副本", "Keep a copy of each day"};
constexpr Message backup_restore = {"查看副本；恢复时用它替换数据库文件", "Look at a copy; to restore it, put it in the database's place"};
constexpr Message backed_up      = {"已复制到 {}。", "Copied to {}."};
constexpr Message is_taken       = {"{} 已存在，未改动；--replace 可替换 SQLite 数据库", "{} is there and was left alone; --replace replaces an SQLite database"};
constexpr Message is_no_database = {"{} 不是 SQLite 数据库，未改动", "{} is no SQLite database; it was left alone"};
constexpr Message is_itself      = {"{} 就是这个数据库", "{} is the database itself"};
constexpr Message not_written    = {"无法写入 {}", "{} cannot be written"};
constexpr Message by_server      = {"数据库服务器用自己的程序备份：{}", "a server's database is copied by its own program: {}"};
// clang-format on

}  // namespace words

namespace {

constexpr std::string_view sqlite_beginning = "SQLite format 3";

struct Wanted {
    std::string file;
    bool replaces = false;
};

/// How each server copies a database while it is used.
std::string_view program_of(std::string_view dialect) {
    struct Row {
        std::string_view dialect;
        std::string_view command;
    };
    constexpr Row rows[] = {
        {"postgresql", "pg_dump --format=custom --file=shop.dump shop"},
        {"mariadb", "mariadb-dump --single-transaction --triggers --result-file=shop.sql shop"},
        {"sqlserver", "backup database shop to disk = 'shop.bak'"},
    };
    for (const Row& row : rows) {
        if (row.dialect == dialect) return row.command;
    }
    return "-";
}

ExitCode back_up(const CommonOptions& common, const Wanted& wanted) {
    constexpr std::string_view sqlite = "sqlite:";
    const auto refuse = [&](const Message& why, std::string_view what) {
        std::cerr << "vantlo: " << common.say(why, what) << '\n';
        return ExitCode::refused;
    };
    const std::string database = common.connection_texts().front();
    if (!database.starts_with(sqlite)) return refuse(words::by_server, program_of(common.dialect().name));
    const std::string source = database.substr(sqlite.size());
    std::error_code ignored;
    if (std::filesystem::equivalent(source, wanted.file, ignored)) return refuse(words::is_itself, wanted.file);
    // Before the work; move_into_place looks again.
    if (!wanted.replaces && std::filesystem::exists(wanted.file, ignored)) return refuse(words::is_taken, wanted.file);
    const std::string beside = name_beside(wanted.file);
    const auto cannot_write = [&] {
        return TaskError(Reason::cannot_write, common.say(words::not_written, wanted.file));
    };
    if (!std::ofstream(beside)) throw cannot_write();
    try {
        copy_sqlite_database(source, beside);
        switch (move_into_place(beside, wanted.file, sqlite_beginning, wanted.replaces)) {
            case Replaced::done: std::clog << common.say(words::backed_up, wanted.file) << '\n'; return ExitCode::done;
            case Replaced::not_written: throw cannot_write();
            case Replaced::is_something_else: break;
        }
    } catch (...) {
        std::filesystem::remove(beside, ignored);
        throw;
    }
    std::filesystem::remove(beside, ignored);
    return refuse(wanted.replaces ? words::is_no_database : words::is_taken, wanted.file);
}

}  // namespace

void add_backup(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "backup", words::backup_about,
                                          {{"vantlo backup shop-2024-03-05.db", words::backup_example},
                                           {"vantlo --db shop-2024-03-05.db verify", words::backup_restore}});
    const auto wanted = std::make_shared<Wanted>();
    command->add_option("FILE", wanted->file, common.say(words::backup_file))->required();
    command->add_flag("--replace", wanted->replaces, common.say(words::backup_replace));
    command->callback(
        [&call, wanted] { call.work = [&common = call.common, wanted] { return back_up(common, *wanted); }; });
}

}  // namespace vantlo
