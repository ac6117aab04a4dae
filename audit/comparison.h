#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "audit/bill_accounts.h"

namespace vantlo {

/// Why ledger and bills differ, as far as the rows tell.
enum class Cause {
    unreadable_history,  ///< an entry of the history tells nothing: what the bills say is not known in full
    refused_bill,        ///< the component does not post the bill
    broken_value,        ///< a field holds what its column is not for
    cannot_judge,        ///< rows of a bill that cannot be read or posted
    unit_factor,         ///< bills were posted under another factor of a unit
    edited_bill,         ///< a bill moved something else than what it says now
    deleted_bill,        ///< a bill that moved something is stored nowhere, and was not taken back
    not_posted,          ///< all that a stored bill moves is missing
    posted_in_part,      ///< the first statements of a bill's posting are there, the rest is missing
    posted_twice,        ///< all that a stored bill moves is there once more
    not_reversed,        ///< all that a bill moved is there still, though it was reversed
    reversed_twice,      ///< all that a bill moved is missing, though it was reversed
    not_in_journal,      ///< bills and movements agree, the ledger differs: it was changed past the triggers
    changed_outside,     ///< movements that name no bill are the difference
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
    LooseMovements loose = {};        ///< what changed the rows outside any bill; set by verify

    /// What the ledger has too much.
    [[nodiscard]] Amounts surplus() const;
};

/// What a bill moved by the journal in one key, and what it moves as it is stored now.
struct EditedRow {
    LedgerKey key;
    Amounts moved;
    Amounts says;
};

/// A unit whose factor is not what bills were posted with.
struct UnitChange {
    Text goods;
    Text unit;
    double factor_then = 0;
    double factor_now = 0;
};

/// One thing that went wrong.
struct Finding {
    Cause cause;
    std::vector<Difference> differences;
    std::optional<std::size_t> event;  ///< the bill that explains it
    std::size_t steps_there = 0;       ///< of a bill posted in part
    std::size_t steps = 0;
    std::string reason;  ///< of a refused bill; which entry is unreadable, and why

    std::optional<BillName> bill = {};  ///< that explains it; also of one that no event knows
    std::vector<EditedRow> edited = {};
    std::optional<UnitChange> unit = {};
    std::vector<std::size_t> unit_events = {};  ///< the bills posted under the other factor
    std::vector<BrokenValue> broken = {};
    bool is_outside_bills = false;  ///< by the journal, what changed the rows was no bill: they can be set right safely

    /// The first event that has to do with it; past all events if none has.
    [[nodiscard]] std::size_t first_event() const;
};

/// What is compared.
struct Witnesses {
    const std::vector<LedgerEntry>& stored;
    const Recomputation& expected;
    const BillTimeline& timeline;
    const std::vector<BrokenValue>& broken_units;
    const Movements* movements;  ///< null without a journal, or where it does not fit the bills
    bool are_all_bills_named;    ///< if not, movements without a bill may be those of a bill
};

struct Compared {
    std::vector<Finding> findings;
    std::vector<LedgerKey> unjournaled;  ///< rows that agree with the bills, but not with their movements
};

/// Compares the ledger with what the bills make of it, row by row, and with its movements.
///
/// Rows are of one key if their keys are exactly equal. A row whose quantities are all 0 equals one that is missing: bills
/// that were taken back leave it, and the component makes it again.
///
/// With movements, the difference of a key is the sum of what each bill moved beside what it says, of movements without a
/// bill, and of what went past the triggers: what is not 0 of these is the cause. Where several are not, bills come first.
/// Returns  the findings by cause; the cause that meets the earliest bill first, and within each likewise.
Compared compare(const Witnesses& witnesses);

/// A key as it looks: without blanks of any kind around its parts, in the usual width of each character.
LedgerKey look_of(const LedgerKey& key);

}  // namespace vantlo
