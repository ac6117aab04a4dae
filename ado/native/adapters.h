#pragma once

#include <string_view>

#include "ado/native/native_connection.h"

namespace vantlo {

// How a connection of each adapter is opened. The functions are defined in the adapters; this room includes none of them.

/// Opens an SQLite file, or `:memory:`; the path is UTF-8. `may_create` says whether a missing file is made. Errors: Failure.
Owned<NativeConnection> open_sqlite(std::string_view file, bool may_create);

/// Opens an SQLite file without writing anything. Errors: Failure.
Owned<NativeConnection> open_sqlite_for_reading(std::string_view file);

/// Opens what an ODBC connection string names. Errors: Failure.
Owned<NativeConnection> open_odbc(std::string_view connection_string);

/// Cancels the statements that run at this moment on ODBC connections of other threads: each fails by its engine's words, a
/// wait for a lock too.
void cancel_odbc_statements() noexcept;

}  // namespace vantlo
