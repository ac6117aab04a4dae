#pragma once

#include <map>

#include "ado/native/native_connection.h"

namespace vantlo {

/// The texts of a column by the ids of their rows, which a column ID has. Errors: Failure, if the table is not there.
std::map<Text, Text> read_texts(NativeConnection& database, TextView table, TextView column);

/// The names of warehouses or goods by their ids. Errors: as above.
inline std::map<Text, Text> read_names(NativeConnection& database, TextView table) {
    return read_texts(database, table, u"Name");
}

}  // namespace vantlo
