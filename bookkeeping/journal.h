#pragma once

#include <vector>

#include "ado/native/native_connection.h"
#include "bills/ledger_row.h"

namespace vantlo {

// The journal of stock movements, which a database writes by itself: see docs/journal.md.

/// How far the journal of a database is there, as far as its account may see that.
enum class JournalState {
    unsupported,  ///< the engine has no triggers
    absent,
    off,         ///< there are movements, but none are added
    incomplete,  ///< some triggers are missing or disabled
    broken,      ///< there are triggers but no StockMovement: every change of the ledger fails
    on,
};

/// Errors   Failure, also if the account has no right to a journal that it then cannot see.
JournalState journal_state(NativeConnection& database);

/// Whether there are movements in that state.
bool has_movements(JournalState state);

/// A ledger key, and the sums of its rows beside those of its movements.
struct UnexplainedKey {
    LedgerRow ledger;
    LedgerRow moved;
};

struct JournalStatus {
    JournalState state = JournalState::absent;
    std::int64_t movements = 0;
    std::vector<UnexplainedKey> unexplained;  ///< known only while it is on
};

JournalStatus journal_status(NativeConnection& database);

/// Switches it on, with an opening entry for each ledger row or one for each gap since it was switched off; a broken one
/// begins anew. Does nothing where it is on. Errors: Failure; what was begun is rolled back where the engine can (MariaDB keeps what it has made).
void switch_journal_on(NativeConnection& database);

/// Switches it off and keeps its movements. Errors: as above.
void switch_journal_off(NativeConnection& database);

/// Switches it off and removes all that it wrote. Errors: as above.
void remove_journal(NativeConnection& database);

}  // namespace vantlo
