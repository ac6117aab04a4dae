#pragma once

#include "bills/ledger_row.h"
#include "reports/listing.h"

namespace vantlo {

/// A status as a cell: the whole number that it should be, else the text that the database holds; Null for none.
Variant status_cell(const Text& status);

/// Rows of the ledger as a list, with all that is known of each.
Listing list_ledger(const std::vector<LedgerRow>& rows);

}  // namespace vantlo
