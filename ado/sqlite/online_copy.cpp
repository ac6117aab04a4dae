#include "ado/sqlite/online_copy.h"

#include <sqlite3.h>

#include "ado/sqlite/open_file.h"
#include "ado/sqlite/sqlite_failure.h"

namespace vantlo {

void copy_sqlite_database(const std::string& from, const std::string& to) {
    constexpr int longest_wait = 5000;  // ms, for another connection's lock
    const SqliteHandle source = open_file_for_reading(from);
    const SqliteHandle copy = open_file(to, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    sqlite3_busy_timeout(source.get(), longest_wait);
    sqlite3_busy_timeout(copy.get(), longest_wait);
    sqlite3_backup* const backup = sqlite3_backup_init(copy.get(), "main", source.get(), "main");
    if (backup == nullptr) throw sqlite_failure(copy.get(), "copying to " + to);
    sqlite3_backup_step(backup, -1);  // all pages in one step: of one moment
    if (sqlite3_backup_finish(backup) != SQLITE_OK) throw sqlite_failure(copy.get(), "copying to " + to);
    if (sqlite3_exec(copy.get(), "pragma journal_mode = delete", nullptr, nullptr, nullptr) != SQLITE_OK)
        throw sqlite_failure(copy.get(), "copying to " + to);
}

}  // namespace vantlo
