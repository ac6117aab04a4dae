#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ado/native/native_connection.h"
#include "audit/broken_value.h"
#include "bills/bill.h"

namespace vantlo {

/// A bill's kind and id.
using BillName = std::pair<Text, Text>;

/// Something that a host did with a bill.
struct BillEvent {
    enum class Action { save, reverse };

    Action action;
    Bill bill;
    bool is_recorded;                  ///< false for a stored bill that the history does not know
    std::optional<Date> done_at = {};  ///< by the history's clock
};

BillName name_of(const Bill& bill);

/// What the history or a bill table has of a bill that cannot take part.
struct BillTrace {
    BillName bill;                     ///< of lines without a header: their table and its id
    std::optional<Date> done_at = {};  ///< of an entry of the history
    std::string reason = {};           ///< why the entry cannot be read, and its number
};

/// All that moved the ledger of a database, in the order in which it did.
struct BillTimeline {
    std::vector<BillEvent> events;
    bool has_bills = true;  ///< whether it is known how the bill tables are read; if not, no bill takes part

    std::vector<BillTrace> lost;          ///< saved by the history, and now stored nowhere
    std::vector<BillTrace> unknown_kind;  ///< a header whose kind is none
    std::vector<BillTrace> headless;      ///< lines without a header
    std::vector<BillTrace> unreadable;    ///< entries of the history that tell nothing

    std::vector<BrokenValue> broken;  ///< of headers, lines and the history
};

/// Reads the stored bills and the history. An entry of the history that cannot be read takes no part, and neither does the
/// saving that it would have taken back; nor does a header or line whose bill cannot be told.
///
/// The order is that of the history. A stored bill without an entry in it, stored by another host or before there was a
/// history, comes before all others, by date and then by id.
BillTimeline read_timeline(NativeConnection& database);

}  // namespace vantlo
