// Windows builds have the SQLite adapter for the tests alone, and no ODBC adapter: this is their `open_connection`.

#include "ado/native/open_connection.h"
#include "ado/sqlite/sqlite_connection.h"
#include "automation/error.h"

namespace vantlo {

Owned<NativeConnection> open_connection(std::string_view database, bool may_create) {
    constexpr std::string_view sqlite = "sqlite:";
    if (!database.starts_with(sqlite)) throw Failure(error::bad_argument, "sqlite:FILE expected");
    return Owned<NativeConnection>(
        new SqliteConnection(std::string(database.substr(sqlite.size())), {.may_create = may_create}));
}

}  // namespace vantlo
