#include "ado/native/open_connection.h"

#include "ado/native/adapters.h"
#include "automation/error.h"

namespace vantlo {

Owned<NativeConnection> open_connection(std::string_view database, bool may_create) {
    constexpr std::string_view sqlite = "sqlite:";
    if (database.starts_with(sqlite)) return open_sqlite(database.substr(sqlite.size()), may_create);
    if (database.find('=') == std::string_view::npos) {
        throw Failure(error::bad_argument, "neither sqlite:FILE nor an ODBC connection string such as DSN=shop");
    }
    return open_odbc(database);
}

}  // namespace vantlo
