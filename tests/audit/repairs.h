#pragma once

#include <doctest/doctest.h>

#include "audit/repair.h"
#include "audit/repair_undo.h"
#include "output/verify_report.h"

// Repairs that are run and undone, on any engine.

namespace vantlo::test {

/// Every row of the ledger, whole.
inline std::vector<RowImage> whole_ledger(NativeConnection& database) { return RowImages(database).of(u"1=1"); }

/// Undoes a repair. Returns the number of the undoing.
inline std::int64_t undo(NativeConnection& database, std::int64_t number) {
    const UndoPlan plan = plan_undo(database, number);
    CHECK(plan.record.is_readable);
    CHECK(!plan.record.keys.empty());
    CHECK(plan.moved.empty());
    const UndoOutcome outcome = run_undo(database, number, plan, from_utf8(undo_in_journal(number)));
    CHECK(outcome.unlike.empty());
    return outcome.number;
}

/// Runs repairs and undoes them, and then the undoing: the whole ledger must be what it was before each.
inline void check_undoing(NativeConnection& database, const std::vector<Repair>& repairs) {
    const std::vector<RowImage> before = whole_ledger(database);
    const RepairOutcome outcome = run_repairs(repairs, database, cause_in_journal);
    CHECK(outcome.spoilt.empty());
    const std::vector<RowImage> after = whole_ledger(database);
    CHECK(before != after);
    const std::int64_t undoing = undo(database, outcome.number);
    CHECK(whole_ledger(database) == before);
    undo(database, undoing);
    CHECK(whole_ledger(database) == after);
}

/// The repair that makes every row of a key a single one with 7 on hand.
inline std::vector<Repair> seven_on_hand(NativeConnection& database, const LedgerKey& key) {
    Difference rows{key, {}, {}, {}};
    for (const LedgerEntry& entry : read_entries(database)) {
        if (entry.key == key) rows.stored.push_back(entry);
    }
    LedgerEntry seven{key, {70000, 0, 70000}, {Null{}, Null{}, Null{}}};
    rows.expected.push_back(seven);
    Finding finding{};
    finding.cause = Cause::changed_quantity;
    finding.differences.push_back(rows);
    return repairs_of({finding});
}

}  // namespace vantlo::test
