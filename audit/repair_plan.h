#pragma once

#include <vector>

#include "audit/verification.h"

namespace vantlo {

/// What a person has named to be repaired.
struct RepairChoice {
    std::vector<Cause> causes;     ///< empty: every cause
    std::vector<Text> goods;       ///< by id; empty: all
    std::vector<Text> warehouses;  ///< by id; empty: all
};

/// The findings that are repaired, and those that are left alone.
struct RepairPlan {
    std::vector<Finding> chosen;
    std::vector<Finding> not_chosen;  ///< differ, but were not named
    std::vector<Finding> unjudged;    ///< would be chosen, but the bills do not tell what is right
};

/// Chooses among the findings of a verified ledger. A finding is taken whole or not at all: half of a repair moves stock.
///
/// Bills tell nothing of rows that no bill touches (opening stock, archived years), and nothing certain of any row while
/// some bill or an entry of the history cannot be read, or some bill cannot be posted, is lost, or has no header. Such findings are chosen only if their goods are named.
RepairPlan plan_repairs(const Verification& verification, const RepairChoice& choice);

}  // namespace vantlo
