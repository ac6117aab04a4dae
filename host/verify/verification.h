#pragma once

#include "host/verify/column_types.h"
#include "host/verify/comparison.h"

namespace vantlo::host {

/// A ledger compared with the bills of its database.
struct Verification {
    CourseOfBills course;
    Recomputation expected;
    std::vector<LedgerEntry> stored;
    std::vector<ColumnDescription> columns;
    std::vector<Finding> findings;
};

/// Reads the bills and the ledger, and compares. What is saved meanwhile may show as a difference.
Verification verify(NativeConnection& database, Language language);

}  // namespace vantlo::host
