#pragma once

#include "ado/native/native_connection.h"
#include "reports/listing.h"
#include "reports/selection.h"

namespace vantlo {

/// Which stock is wanted: patterns as in and_matches; what is empty does not matter.
struct IdleWanted {
    Date since;  ///< local time
    std::vector<Text> goods = {};
    std::vector<Text> warehouses = {};
};

/// The stock that has not moved since a moment, longest first: what is on hand, and when it last moved, which is nothing
/// where it has not since the journal of movements began.
/// Errors   Failure, if there is no journal of movements.
Listing list_idle_stock(NativeConnection& database, const IdleWanted& wanted);

}  // namespace vantlo
