#pragma once

#include <vector>

#include "audit/verification.h"

namespace vantlo {

/// What a person has named to be repaired.
struct RepairChoice {
    std::vector<Cause> causes;     ///< empty: with a journal what was changed outside any bill, without one every cause
    std::vector<Text> goods;       ///< by id; empty: all
    std::vector<Text> warehouses;  ///< by id; empty: all
};

/// The findings that are repaired, and those that are left alone.
struct RepairPlan {
    std::vector<Finding> chosen;
    std::vector<Finding> not_chosen;  ///< differ, but were not named
    std::vector<Finding> unjudged;    ///< would be chosen, but it is not known that the bills are right there
    bool is_by_journal = false;       ///< whether, without a cause named, the journal chose
};

/// Chooses among the findings of a verified ledger. A finding is taken whole or not at all: half of a repair moves stock.
///
/// With a journal, unless causes are named, exactly those findings are chosen whose rows no bill changed. What else is
/// named is chosen only if the bills can be trusted in it, or if its goods are named too. Bills cannot be trusted in rows
/// that none of them touches (opening stock, archived years), in rows of a bill that was edited or deleted or cannot be
/// read, under a changed unit, and nowhere while a bill or an entry of the history is not known in full.
RepairPlan plan_repairs(const Verification& verification, const RepairChoice& choice);

}  // namespace vantlo
