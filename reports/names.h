#pragma once

#include <map>

#include "ado/native/native_connection.h"

namespace vantlo {

/// The names in a table by their ids, from its columns ID and Name. Errors: Failure, if the table is not there.
std::map<Text, Text> read_names(NativeConnection& database, TextView table);

}  // namespace vantlo
