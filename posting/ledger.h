#pragma once

#include "posting/line.h"
#include "posting/posting_frame.h"
#include "posting/statement.h"

namespace vantlo {

/// Where a statement takes one of its values from: the line, which is asked at every use, or a value given once.
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

/// How one movement changes a ledger row: the two phrases of an update, and the sign of the quantity in the three
/// counters of an insert. The sign 0 stands for the whole number 0.
struct Movement {
    TextView counter_phrase;
    TextView on_hand_phrase;
    int received;
    int issued;
    int on_hand;
};

/// The four movements of the ledger. Families whose phrases or signs differ have rows of their own.
// clang-format off
namespace movement {
//                                         counter                  on hand                         In  Out  Current
inline constexpr Movement receipt      = {u"InQty = InQty + ",   u",CurrentQty = CurrentQty + ",    +1,   0,  +1};
inline constexpr Movement issue        = {u"OutQty = OutQty + ", u",CurrentQty = CurrentQty - ",     0,  +1,  -1};
inline constexpr Movement receipt_back = {u"InQty = InQty - ",   u",CurrentQty = CurrentQty - ",    -1,   0,  -1};
inline constexpr Movement issue_back   = {u"OutQty = OutQty - ", u",CurrentQty = CurrentQty + ",     0,  -1,  +1};
}  // namespace movement
// clang-format on

/// How a status is written in a WHERE clause: as CStr does, where Null fails, or as GetSqlVal does.
enum class StatusForm { unquoted, literal };

/// How the ledger row is looked up: by the connection's Execute, or by the prepared recordset's own Open.
enum class LookupBy { execute, open };

/// When the look-up is closed: after the row is written, before it, or by the caller.
enum class LookupClose { after_write, before_write, by_caller };

/// How each statement on the ledger begins: for those that write it and for recognize_ledger_statement.
namespace ledger_head {
inline constexpr TextView lookup = u"select * from Inventory";
inline constexpr TextView count = u"Select Count(*) as TempQty from Inventory ";
inline constexpr TextView update = u"update Inventory set ";
inline constexpr TextView insert = u"insert into Inventory(";
inline constexpr TextView key = u" where WID=";  // of look-ups, counts and updates
}  // namespace ledger_head

/// How a family's statements are written, and when its look-up is closed.
struct StatementStyle {
    TextView lookup_head = ledger_head::lookup;
    StatusForm status_in_lookup = StatusForm::unquoted;
    StatusForm status_in_update = StatusForm::unquoted;
    TextView remarks_column = u"Remarks";
    bool update_overwrites_remarks = false;
    LookupBy lookup_by = LookupBy::execute;
    LookupClose lookup_close = LookupClose::after_write;
};

/// One movement of a line: which ledger row changes, and by how much. Goods and models come from the line.
struct Side {
    Movement movement;
    Source warehouse;
    Source status;
    Source quantity_in_update;
    Source quantity_in_insert;
};

/// A side with the same quantity in update and insert.
Side side(const Movement& movement, const Source& warehouse, const Source& status, Currency quantity);

/// Appends " where WID=… and GId=… and Model1=… and Model2=… and Status=…"; the values are read in this order.
Statement& append_key(Statement& statement, Line& line, const Source& warehouse, const Source& status, StatusForm form);

/// Reads    the quantity twice, the remarks if the style overwrites them, then the key.
Statement update_statement(Line& line, const StatementStyle& style, const Side& side);

/// Reads    the key, Class, Unit, the quantities that are not 0, the remarks, in the order of the columns.
Statement insert_statement(Line& line, const StatementStyle& style, const Side& side,
                           TextView values_head = u"values(");

/// Looks up one ledger row; returns the UPDATE or INSERT for it.
Statement build_write(PostingFrame& frame, Line& line, const StatementStyle& style, const Side& side);

/// The ledger rule: looks up one ledger row, updates it if it exists, inserts it if not.
///
/// Reads    the line's key fields afresh for each statement.
/// Writes   one row of Inventory, or every row with that key.
/// Errors   raised to the caller; the look-up is then left open.
void post(PostingFrame& frame, Line& line, const StatementStyle& style, const Side& side);

/// What a statement does to the ledger.
enum class LedgerAction { none, look_up, count, update, insert };

struct LedgerStatement {
    LedgerAction action = LedgerAction::none;
    TextView condition;  ///< of a look-up or a count: its WHERE clause, from `where WID=` to the end
};

/// What a statement is, of those that postings send. Any other is none of the ledger's.
LedgerStatement recognize_ledger_statement(TextView statement);

}  // namespace vantlo
