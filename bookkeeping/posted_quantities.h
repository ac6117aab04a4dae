#pragma once

#include <vector>

#include "ado/native/native_connection.h"
#include "bills/bill.h"
#include "bills/ledger_row.h"

namespace vantlo {

/// What a bill has added to the stock of a ledger row until now, as the journal of movements knows it.
struct PostedQuantity {
    LedgerRow key;  ///< its key alone
    Currency on_hand;
};

/// One entry for each ledger key of the bill's goods. Empty where there is no journal, where it may not be read, where it does
/// not know the bill, and where the ledger changed while it was off since the bill was posted.
std::vector<PostedQuantity> posted_quantities(NativeConnection& database, const Bill& bill);

/// Whether two ledger rows have the same key.
bool have_same_key(const LedgerRow& one, const LedgerRow& other);

}  // namespace vantlo
