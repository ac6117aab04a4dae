#include "ado/open_connection.h"

#include "ado/odbc/odbc_connection.h"
#include "ado/sqlite/sqlite_connection.h"
#include "automation/error.h"

namespace vantlo {

Owned<NativeConnection> open_connection(std::string_view database, bool may_create) {
    constexpr std::string_view sqlite = "sqlite:";
    if (database.starts_with(sqlite)) {
        const SqliteOptions options{.may_create = may_create};
        return Owned<NativeConnection>(new SqliteConnection(std::string(database.substr(sqlite.size())), options));
    }
    if (database.find('=') == std::string_view::npos) {
        throw Failure(error::bad_argument, "neither sqlite:FILE nor an ODBC connection string such as DSN=shop");
    }
    return Owned<NativeConnection>(new OdbcConnection(std::string(database)));
}

}  // namespace vantlo
