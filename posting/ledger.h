#pragma once

#include "posting/line.h"
#include "posting/statement.h"

namespace vantlo {

/// Where a statement gets one of its values: from the line, read afresh for every use, or given once.
class Source {
public:
    static Source of_line(TextView column) { return Source(column, {}); }
    static Source given(Variant value) { return Source({}, std::move(value)); }

    [[nodiscard]] Variant read(Line& line) const { return column_.empty() ? value_ : line.value(column_); }

private:
    Source(TextView column, Variant value) : column_(column), value_(std::move(value)) {}

    TextView column_;
    Variant value_;
};

/// How one movement changes a ledger row: the two phrases of an update, and the signs with which the quantity enters
/// the three counters of an inserted row (0 writes a whole 0).
struct Movement {
    TextView counter_phrase;
    TextView on_hand_phrase;
    int received;
    int issued;
    int on_hand;
};

/// The four movements of the ledger; families whose phrases or signs differ keep their own rows.
// clang-format off
namespace movement {
//                                         counter                  on hand                         In  Out  Current
inline constexpr Movement receipt      = {u"InQty = InQty + ",   u",CurrentQty = CurrentQty + ",    +1,   0,  +1};
inline constexpr Movement issue        = {u"OutQty = OutQty + ", u",CurrentQty = CurrentQty - ",     0,  +1,  -1};
inline constexpr Movement receipt_back = {u"InQty = InQty - ",   u",CurrentQty = CurrentQty - ",    -1,   0,  -1};
inline constexpr Movement issue_back   = {u"OutQty = OutQty - ", u",CurrentQty = CurrentQty + ",     0,  -1,  +1};
}  // namespace movement
// clang-format on

/// How a status enters a WHERE clause: as CStr writes it (null fails), or as GetSqlVal does (null becomes `null`).
enum class StatusForm { digits, literal };

/// By what a ledger row is looked up: the connection's Execute, or the prepared recordset's own Open.
enum class LookupBy { execute, open };

/// When the look-up is closed: after the row is written, before it, or not by the posting itself.
enum class LookupClose { after_write, before_write, by_caller };

/// How a family words and orders what every posting does.
struct Wording {
    TextView lookup_head = u"select * from Inventory";
    StatusForm status_in_lookup = StatusForm::digits;
    StatusForm status_in_update = StatusForm::digits;
    TextView remarks_column = u"Remarks";
    bool update_overwrites_remarks = false;
    LookupBy lookup_by = LookupBy::execute;
    LookupClose lookup_close = LookupClose::after_write;
};

/// One side of a line: which ledger row moves, and by how much. Goods and models come from the line.
struct Side {
    Movement movement;
    Source warehouse;
    Source status;
    Source quantity_in_update;
    Source quantity_in_insert;
};

/// A side moved by a base quantity, in update and insert alike.
Side side(const Movement& movement, const Source& warehouse, const Source& status, Currency quantity);

/// " where WID=… and GId=… and Model1=… and Model2=… and Status=…", read from the line in this order.
Statement& append_key(Statement& statement, Line& line, const Source& warehouse, const Source& status, StatusForm form);

Statement update_statement(Line& line, const Wording& wording, const Side& side);

/// Reads    the five key values, Class, Unit, the three quantities, the remarks, in this order.
Statement insert_statement(Line& line, const Wording& wording, const Side& side, TextView values_head = u"values(");

/// Looks the row of one side up and words the statement that moves it: an update where it exists, an insert where not.
Statement look_up_and_word(Connection* connection, RecordsetVariable& lookup, Line& line, const Wording& wording,
                           const Side& side);

/// The ledger rule: looks the row of one side up, updates it where it exists, inserts it where it does not.
///
/// Reads    the line's key fields afresh for each statement.
/// Writes   one row of Inventory, or every row that shares the key.
/// Errors   raised to the caller; the look-up is then left open.
void post(Connection* connection, RecordsetVariable& lookup, Line& line, const Wording& wording, const Side& side);

}  // namespace vantlo
