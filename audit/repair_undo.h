#pragma once

#include <optional>
#include <vector>

#include "audit/repair_journal.h"

namespace vantlo {

/// Rows of a key that are not as the repair left them.
struct MovedRows {
    Text condition;
    std::vector<RowImage> left;  ///< as the repair left them
    std::vector<RowImage> now;

    /// The latest movement of the key, where the journal of movements has one that is not the repair's own.
    struct Movement {
        Text time;
        Text user;
        Text program;
        Text bill;  ///< kind and id
    };
    std::optional<Movement> latest;
};

/// What brings the rows of a repair back as they were before it.
struct UndoPlan {
    RepairRecord record;
    std::vector<MovedRows> moved;  ///< nothing can be undone if there are any
    std::vector<Text> removals;    ///< to be run first
    std::vector<Text> statements;
};

/// Compares the ledger with what the repair left. Errors   Failure.
UndoPlan plan_undo(NativeConnection& database, std::int64_t number);

struct UndoOutcome {
    std::int64_t number = 0;   ///< of the undoing, which is a repair itself
    std::vector<Text> unlike;  ///< the conditions of rows that are not as before all the same: to be rolled back
};

/// Runs the plan of repair `undone` in the transaction that is open, and enters it under `cause`. Errors   Failure.
UndoOutcome run_undo(NativeConnection& database, std::int64_t undone, const UndoPlan& plan, const Text& cause);

}  // namespace vantlo
