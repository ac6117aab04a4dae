#pragma once

#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "bills/bill.h"

namespace vantlo {

/// Something that a host did with a bill.
struct BillEvent {
    enum class Action { save, reverse };

    Action action;
    Bill bill;
    bool is_recorded;  ///< false for a stored bill that the history does not know
};

/// All that moved the ledger of a database, in the order in which it did.
struct BillTimeline {
    std::vector<BillEvent> events;
    bool has_bills = true;  ///< whether it is known how the bill tables are read; if not, no bill takes part

    // What cannot take part, as `KIND ID`.
    std::vector<std::string> lost;          ///< saved by the history, and now stored nowhere
    std::vector<std::string> unknown_kind;  ///< a header whose kind is none
    std::vector<std::string> headless;      ///< lines without a header, as `TABLE ID`
    std::vector<std::string>
        unreadable;  ///< entries of the history that tell nothing, as `KIND ID (BillHistory N): WHY`
};

/// Reads the stored bills and the history. An entry of the history that cannot be read takes no part, and neither does the
/// saving that it would have taken back.
///
/// The order is that of the history. A stored bill without an entry in it, stored by another host or before there was a
/// history, comes before all others, by date and then by id.
BillTimeline read_timeline(NativeConnection& database);

}  // namespace vantlo
