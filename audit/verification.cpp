#include "audit/verification.h"

#include <algorithm>

#include "audit/participation.h"
#include "audit/unit_changes.h"

namespace vantlo {

namespace {

/// The ledger as its movements make it; the ledger itself where there is no journal.
std::vector<LedgerEntry> moved_entries(NativeConnection& database, std::vector<LedgerEntry> stored) {
    const JournalState state = journal_state(database);
    if (state != JournalState::on && state != JournalState::incomplete) return stored;
    const RecordsetVariable rows = database.execute(
        u"select WID,GId,Model1,Model2,Status,MovedIn as InQty,MovedOut as OutQty,MovedCurrent as CurrentQty,"
        u"null as Class,null as Unit,null as Remarks from LedgerWithoutMovement");
    for (; !rows->eof(); rows->move_next()) {
        LedgerEntry moved = read_entry(*rows);
        std::erase_if(stored, [&](const LedgerEntry& entry) { return entry.key == moved.key; });
        stored.push_back(std::move(moved));
    }
    return stored;
}

std::vector<BrokenValue> broken_units(NativeConnection& database) {
    std::vector<BrokenValue> broken;
    const RecordsetVariable rows = database.execute(u"select id,Unit,UnitConverter from GoodsUnit");
    for (; !rows->eof(); rows->move_next()) {
        const auto text = [&](const char16_t* column) { return text_or_nothing(rows->field(column)).value_or(u"?"); };
        const Variant factor = rows->field(u"UnitConverter");
        if (is_of_type(factor, ColumnType::single)) continue;
        broken.push_back({u"GoodsUnit", text(u"id") + u" " + text(u"Unit"), u"UnitConverter", factor});
    }
    return broken;
}

/// Adds what the journal knows of the changes that no bill made.
void add_loose_movements(NativeConnection& database, Verification& verification) {
    for (Finding& finding : verification.findings) {
        for (Difference& rows : finding.differences) {
            rows.loose = loose_movements(database, rows.key, verification.movements);
        }
    }
}

}  // namespace

Verification verify(NativeConnection& database, Language language, WhichBills which) {
    Verification verification;
    verification.timeline = read_timeline(database);
    verification.movements = read_movements(database);
    verification.stored = read_entries(database);
    verification.columns = read_columns(database);
    verification.broken_units = broken_units(database);

    const Movements& movements = verification.movements;
    const bool begins_with_opening = movements.opened_at.has_value() && which == WhichBills::since_opening;
    verification.uses_journal =
        movements.is_readable && verification.timeline.has_bills && (begins_with_opening || !movements.opened_at);
    verification.are_all_bills_named = are_all_bills_named(verification.timeline, movements);
    if (begins_with_opening) leave_out_before_opening(verification.timeline, movements, database, language);
    verification.expected = recompute(database, verification.timeline, language,
                                      begins_with_opening ? movements.opening : std::vector<LedgerEntry>());
    // Where nobody said how bills are read, ledger and movements are compared alone.
    if (!verification.timeline.has_bills) verification.expected.rows = moved_entries(database, verification.stored);
    Compared compared =
        compare({verification.stored, verification.expected, verification.timeline, verification.broken_units,
                 verification.uses_journal ? &movements : nullptr, verification.are_all_bills_named});
    verification.findings = std::move(compared.findings);
    verification.unjournaled = std::move(compared.unjournaled);
    if (verification.uses_journal) {
        find_unit_changes(database, verification, language);
        add_loose_movements(database, verification);
    }
    return verification;
}

}  // namespace vantlo
