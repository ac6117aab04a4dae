#pragma once

#include <optional>
#include <vector>

#include "ado/connection.h"

namespace vantlo {

/// A statement's result read to its end: what a client-side cursor holds.
struct ResultTable {
    std::vector<Text> columns;
    std::vector<std::vector<Variant>> rows;
    bool yields_rows = false;  ///< whether the statement is one that can return rows at all

    /// How many rows an insert, update or delete has changed, as the driver counts; nothing where it does not. Drivers count
    /// differently behind views and triggers.
    std::optional<std::int64_t> changed_rows = {};
};

/// A recordset over a ResultTable, opened through a connection or made of a result. `statement` is what gave the result: the
/// failure of an unknown field names it.
RecordsetVariable make_client_recordset();
RecordsetVariable make_client_recordset(ResultTable result, TextView statement = {});

}  // namespace vantlo
