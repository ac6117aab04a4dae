// Stands for the adapter where the tool is built without ODBC.

#include "ado/native/adapters.h"
#include "automation/error.h"

namespace vantlo {

Owned<NativeConnection> open_odbc(std::string_view /*connection_string*/) {
    throw Failure(error::bad_argument,
                  "a database server is reached through ODBC, and this program was built without it (VANTLO_ODBC=OFF); "
                  "sqlite:FILE names a database that it can open");
}

void cancel_odbc_statements() noexcept {}

}  // namespace vantlo
