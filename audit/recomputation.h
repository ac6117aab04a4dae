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

/// How many base units one unit of some goods holds.
struct UnitFactor {
    Text goods;
    Text unit;
    double factor;

    friend bool operator==(const UnitFactor&, const UnitFactor&) = default;
};

/// Posts all bills of the timeline, through the component's own code, into a ledger in memory that begins with `opening`.
///
/// Units are those that `database` stores now, but for `other_factors`. `language` is that of the error texts in refusals.
Recomputation recompute(NativeConnection& database, const BillTimeline& timeline, Language language,
                        const std::vector<LedgerEntry>& opening = {},
                        const std::vector<UnitFactor>& other_factors = {});

}  // namespace vantlo
