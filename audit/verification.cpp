#include "audit/verification.h"

#include <algorithm>

#include "bookkeeping/journal.h"

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

}  // namespace

Verification verify(NativeConnection& database, Language language) {
    Verification verification;
    verification.timeline = read_timeline(database);
    verification.stored = read_entries(database);
    verification.columns = read_columns(database);
    verification.expected = recompute(database, verification.timeline, language);
    // Where nobody said how bills are read, ledger and movements are compared alone.
    if (!verification.timeline.has_bills) verification.expected.rows = moved_entries(database, verification.stored);
    verification.findings = compare(verification.stored, verification.expected, verification.timeline);
    return verification;
}

}  // namespace vantlo
