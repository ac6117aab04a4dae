#pragma once

#include <string>

#include "ado/native/native_connection.h"

namespace vantlo {

/// Whether a table is there. A failed look would end the transaction: the catalog is asked first, but some catalogs hide
/// from an account what it has no right to.
/// name     of letters alone
/// Errors   Failure, if the account may not read it.
bool find_table(NativeConnection& database, const std::string& name);

}  // namespace vantlo
