#pragma once

#include "audit/column_types.h"
#include "audit/comparison.h"

namespace vantlo {

/// Which bills a ledger is compared with, where its journal began with an opening.
enum class WhichBills {
    since_opening,  ///< those posted since; the opening stands for what was there before
    all,            ///< all that are stored, from an empty ledger on: opening stock has no bill then
};

/// A ledger compared with the bills and the movements of its database.
struct Verification {
    BillTimeline timeline;  ///< of the bills that take part
    Movements movements;
    Recomputation expected;
    std::vector<LedgerEntry> stored;
    std::vector<ColumnDescription> columns;
    std::vector<BrokenValue> broken_units;
    std::vector<Finding> findings;
    bool uses_journal = false;           ///< whether movements were compared too
    bool are_all_bills_named = false;    ///< if not, movements without a bill may be those of a bill
    std::vector<LedgerKey> unjournaled;  ///< rows that agree with the bills, but not with their movements
};

/// Reads bills, movements and ledger, and compares. To be run in a transaction that sees one state, or what is saved
/// meanwhile may show as a difference.
Verification verify(NativeConnection& database, Language language, WhichBills which = WhichBills::since_opening);

}  // namespace vantlo
