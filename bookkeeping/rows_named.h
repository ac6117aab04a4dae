#pragma once

#include <span>
#include <vector>

#include "ado/native/native_connection.h"
#include "bills/bill_kinds.h"

namespace vantlo {

/// Columns as a select lists them. Example  `ID,Name,Unit`
Text column_list(std::span<const BillColumn> columns);

/// The rows of a table whose column `key` is one of the names, in as many statements as it takes.
/// Errors   Failure.
std::vector<std::vector<Variant>> rows_named(NativeConnection& database, const Text& table, const Text& columns,
                                             const Text& key, std::span<const Text> names);

}  // namespace vantlo
