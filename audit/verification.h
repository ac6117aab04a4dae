#pragma once

#include "audit/column_types.h"
#include "audit/comparison.h"

namespace vantlo {

/// A ledger compared with the bills of its database.
struct Verification {
    BillTimeline timeline;
    Recomputation expected;
    std::vector<LedgerEntry> stored;
    std::vector<ColumnDescription> columns;
    std::vector<Finding> findings;
};

/// Reads the bills and the ledger, and compares. What is saved meanwhile may show as a difference.
Verification verify(NativeConnection& database, Language language);

}  // namespace vantlo
