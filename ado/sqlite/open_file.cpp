#include "ado/sqlite/open_file.h"

#include <sqlite3.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "ado/sqlite/sqlite_failure.h"

namespace vantlo {

namespace {

/// Whether a database file says that it has a write-ahead log.
/// Source   https://www.sqlite.org/fileformat.html: the read version at offset 19 is 2.
bool needs_log(const std::string& file) {
    constexpr std::size_t head_size = 20;
    std::array<char, head_size> head{};
    std::ifstream(file, std::ios::binary).read(head.data(), head_size);
    return head.back() == 2;
}

/// Whether another connection has the file open, or has left its log behind.
bool is_open_elsewhere(const std::string& file) {
    std::error_code ignored;
    return std::filesystem::exists(file + "-wal", ignored) || std::filesystem::exists(file + "-shm", ignored);
}

/// The file as a URI by which the engine takes it for one that nobody changes: no log and no locks.
std::string immutable_name(const std::string& file) {
    std::string name = "file:";
    for (const char character : std::filesystem::absolute(file).string()) {
        if (character == '%' || character == '?' || character == '#') {
            constexpr std::string_view digits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(character);
            name += {'%', digits[byte / 16], digits[byte % 16]};
        } else {
            name += character;
        }
    }
    return name + "?immutable=1";
}

SqliteHandle open_named(const std::string& name, const std::string& file, int flags) {
    sqlite3* opened = nullptr;
    const int result =
        sqlite3_open_v2(name.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    SqliteHandle database(opened);
    if (result != SQLITE_OK) throw sqlite_failure(database.get(), "opening " + file);
    return database;
}

}  // namespace

void SqliteCloser::operator()(sqlite3* database) const noexcept { sqlite3_close(database); }

SqliteHandle open_file(const std::string& file, int flags) { return open_named(file, file, flags); }

SqliteHandle open_file_for_reading(const std::string& file) {
    // For a file without the right to write this is for reading, too.
    SqliteHandle database = open_file(file, SQLITE_OPEN_READWRITE);
    const bool may_write = sqlite3_db_readonly(database.get(), "main") == 0;
    if (may_write || !needs_log(file) || is_open_elsewhere(file)) {
        const int result =
            sqlite3_exec(database.get(), "select count(*) from sqlite_schema", nullptr, nullptr, nullptr);
        const int code = result & 0xFF;
        if (code != SQLITE_CANTOPEN && code != SQLITE_READONLY) return database;
        if (is_open_elsewhere(file))
            throw sqlite_failure(database.get(), "reading " + file + ", whose log " + file +
                                                     "-wal cannot be read without the right to write it");
    }
    return open_named(immutable_name(file), file, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
}

}  // namespace vantlo
