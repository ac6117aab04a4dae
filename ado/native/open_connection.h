#pragma once

#include <string_view>

#include "ado/native/native_connection.h"

namespace vantlo {

/// Opens the database that a text names, in UTF-8: `sqlite:FILE` (`sqlite::memory:` for one in memory), or an ODBC
/// connection string. `may_create` says whether an SQLite file that does not exist is made.
/// Errors   Failure, as the adapters raise it; bad_argument for a text that is neither.
Owned<NativeConnection> open_connection(std::string_view database, bool may_create = true);

/// Opens a database that is only to be read: an SQLite file without the right to write it, too. Errors: as above.
Owned<NativeConnection> open_for_reading(std::string_view database);

}  // namespace vantlo
