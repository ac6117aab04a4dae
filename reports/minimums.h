#pragma once

#include "ado/native/native_connection.h"
#include "reports/listing.h"
#include "reports/selection.h"

namespace vantlo {

/// Which minimums are wanted: patterns as in and_matches; what is empty does not matter.
struct MinimumsWanted {
    std::vector<Text> goods = {};
    std::vector<Text> warehouses = {};  ///< minimums of all warehouses together have an empty one
    bool with_enough = false;           ///< those too of which there is enough
};

/// The minimums of which there is less on hand, by goods, warehouse, models and status: what is to be there, what is, and
/// what is missing, in the goods' base unit. A minimum of 0 is none.
/// Errors   Failure, no_such_table if no minimum was ever set or imported in a database of an earlier version.
Listing list_minimums(NativeConnection& database, const MinimumsWanted& wanted);

}  // namespace vantlo
