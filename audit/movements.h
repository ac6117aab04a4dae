#pragma once

#include <map>
#include <optional>
#include <vector>

#include "audit/bill_timeline.h"
#include "audit/ledger_entry.h"
#include "bookkeeping/journal.h"

namespace vantlo {

/// What the journal of movements has of one bill.
struct BillMovements {
    AmountsByKey moved;     ///< its sum, in the keys that it changed
    std::size_t count = 0;  ///< how many movements
};

/// A movement that names no bill.
struct LooseMovement {
    std::optional<Date> moved_at;
    Text action;
    Text user;
    Text program;
    Amounts change;
    std::array<Variant, quantity_columns.size()> after;  ///< null where the row is gone
};

/// The journal of movements, added up: see docs/journal.md.
struct Movements {
    JournalState state = JournalState::absent;
    bool is_readable = false;  ///< there are movements, and this account may read them

    std::optional<Date> opened_at;     ///< nothing if it began with an empty ledger
    std::vector<LedgerEntry> opening;  ///< the ledger's rows at that moment, without class, unit and remarks

    AmountsByKey all;  ///< what the ledger has by the journal
    std::map<BillName, BillMovements> of_bills;
    AmountsByKey loose;                             ///< without a bill, but for opening and gap
    std::map<LedgerKey, std::size_t> loose_counts;  ///< how many these are
    AmountsByKey gap;                               ///< what changed while the journal was off
};

Movements read_movements(NativeConnection& database);

/// Movements of one ledger key that name no bill.
struct LooseMovements {
    std::vector<LooseMovement> latest;  ///< in their order
    bool has_earlier = false;           ///< there are more before them
};

/// The latest hundred, without those up to the last at which all added up to nothing.
LooseMovements loose_movements(NativeConnection& database, const LedgerKey& key, const Movements& movements);

/// How often movements without a bill changed a ledger row by the same amounts, opening and gap aside.
std::map<std::pair<LedgerKey, Amounts>, std::size_t> loose_steps(NativeConnection& database);

}  // namespace vantlo
