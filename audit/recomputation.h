#pragma once

#include <string>
#include <vector>

#include "audit/bill_timeline.h"
#include "audit/ledger_entry.h"
#include "automation/error_text.h"

namespace vantlo {

/// One statement of a posting: what it added to one row.
struct PostingStep {
    std::size_t event;  ///< in BillTimeline::events
    std::size_t row;    ///< in Recomputation::rows
    Amounts added;
};

/// The ledger as the bills make it.
struct Recomputation {
    std::vector<LedgerEntry> rows;
    std::vector<PostingStep> steps;

    struct Refusal {
        std::size_t event;
        std::string reason;
    };
    std::vector<Refusal> refusals;  ///< bills that the component does not post; nothing of them is in the rows
};

/// Posts all bills of the timeline, through the component's own code, into an empty ledger in memory.
///
/// Units are those that `database` stores now. `language` is that of the error texts in refusals.
Recomputation recompute(NativeConnection& database, const BillTimeline& timeline, Language language);

}  // namespace vantlo
