#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "audit/recomputation.h"

namespace vantlo {

/// Why ledger and bills differ, as far as the rows tell.
enum class Cause {
    unreadable_history,  ///< an entry of the history tells nothing: what the bills say is not known in full
    refused_bill,        ///< the component does not post the bill
    not_posted,          ///< all that a stored bill moves is missing
    posted_in_part,      ///< the first statements of a bill's posting are there, the rest is missing
    posted_twice,        ///< all that a stored bill moves is there once more
    not_reversed,        ///< all that a bill moved is there still, though it was reversed
    reversed_twice,      ///< all that a bill moved is missing, though it was reversed
    null_quantity,
    duplicate_key,
    blanks_in_key,  ///< the same key, trimmed, lacks exactly this row's quantities
    width_of_key,   ///< the same key in the usual width of each character lacks them
    wrong_status,   ///< the same key under another status lacks them
    unbalanced,     ///< received less issued is not on hand
    negative_stock,
    missing_row,
    extra_row,
    changed_quantity,
};

/// The name by which commands and files call a cause. Example: `extra-row`
std::string_view name_of(Cause cause);

/// The cause of that name; nothing if there is none.
std::optional<Cause> find_cause(std::string_view name);

/// The names of all causes, in the order of the causes.
std::vector<std::string> cause_names();

/// All rows of one key, where ledger and bills differ in them.
struct Difference {
    LedgerKey key;
    std::vector<LedgerEntry> stored;
    std::vector<LedgerEntry> expected;
    std::vector<std::size_t> events;  ///< those that touch the rows, in order

    /// What the ledger has too much.
    [[nodiscard]] Amounts surplus() const;
};

/// One thing that went wrong.
struct Finding {
    Cause cause;
    std::vector<Difference> differences;
    std::optional<std::size_t> event;  ///< the bill that explains it
    std::size_t steps_there = 0;       ///< of a bill posted in part
    std::size_t steps = 0;
    std::string reason;  ///< of a refused bill; which entry is unreadable, and why

    /// The first event that has to do with it; past all events if none has.
    [[nodiscard]] std::size_t first_event() const;
};

/// Compares the ledger with what the bills make of it, row by row.
///
/// Rows are of one key if their keys are exactly equal. A row whose quantities are all 0 equals one that is missing: bills
/// that were taken back leave it, and the component makes it again.
/// Returns  the findings by cause; the cause that meets the earliest bill first, and within each likewise.
std::vector<Finding> compare(const std::vector<LedgerEntry>& stored, const Recomputation& expected,
                             const BillTimeline& timeline);

/// A key as it looks: without blanks of any kind around its parts, in the usual width of each character.
LedgerKey look_of(const LedgerKey& key);

}  // namespace vantlo
