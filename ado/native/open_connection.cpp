#include "ado/native/open_connection.h"

#include "ado/native/adapters.h"
#include "automation/error.h"

namespace vantlo {

namespace {

constexpr std::string_view sqlite = "sqlite:";

}  // namespace

Owned<NativeConnection> open_connection(std::string_view database, bool may_create) {
    if (database.starts_with(sqlite)) return open_sqlite(database.substr(sqlite.size()), may_create);
    if (database.find('=') == std::string_view::npos) {
        throw Failure(error::bad_argument, "neither sqlite:FILE nor an ODBC connection string such as DSN=shop");
    }
    return open_odbc(database);
}

Owned<NativeConnection> open_for_reading(std::string_view database) {
    if (database.starts_with(sqlite)) return open_sqlite_for_reading(database.substr(sqlite.size()));
    return open_connection(database);
}

}  // namespace vantlo
