#include "ado/sqlite/online_copy.h"

#include <sqlite3.h>

#include <memory>

#include "ado/sqlite/sqlite_failure.h"

namespace vantlo {

namespace {

struct Closer {
    void operator()(sqlite3* database) const noexcept { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, Closer>;

Database open_database(const std::string& file, int flags) {
    constexpr int longest_wait = 5000;  // ms, for another connection's lock
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &opened, flags | SQLITE_OPEN_EXRESCODE, nullptr);
    Database database(opened);
    if (result != SQLITE_OK) throw sqlite_failure(database.get(), "opening " + file);
    sqlite3_busy_timeout(database.get(), longest_wait);
    return database;
}

}  // namespace

void copy_sqlite_database(const std::string& from, const std::string& to) {
    const Database source = open_database(from, SQLITE_OPEN_READWRITE);
    const Database copy = open_database(to, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    sqlite3_backup* const backup = sqlite3_backup_init(copy.get(), "main", source.get(), "main");
    if (backup == nullptr) throw sqlite_failure(copy.get(), "copying to " + to);
    sqlite3_backup_step(backup, -1);  // all pages in one step: of one moment
    if (sqlite3_backup_finish(backup) != SQLITE_OK) throw sqlite_failure(copy.get(), "copying to " + to);
    if (sqlite3_exec(copy.get(), "pragma journal_mode = delete", nullptr, nullptr, nullptr) != SQLITE_OK)
        throw sqlite_failure(copy.get(), "copying to " + to);
}

}  // namespace vantlo
