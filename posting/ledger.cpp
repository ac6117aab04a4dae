#include "posting/ledger.h"

namespace vantlo {

namespace {

void look_up(PostingFrame& frame, Line& line, const StatementStyle& style, const Side& side) {
    Statement select;
    select.piece(style.lookup_head);
    append_key(select, line, side.warehouse, side.status, style.status_in_lookup);
    if (style.lookup_by == LookupBy::open) {
        require_set(frame.lookup).open(select.text());
    } else {
        frame.lookup = frame.execute(select);
    }
}

/// The value of one counter of an inserted row.
Variant counter(Line& line, const Source& quantity, int sign) {
    if (sign == 0) return std::int16_t{0};
    return sign > 0 ? quantity.read(line) : zero_minus(quantity.read(line));
}

}  // namespace

Side side(const Movement& movement, const Source& warehouse, const Source& status, Currency quantity) {
    const Source moved = Source::given(quantity);
    return {movement, warehouse, status, moved, moved};
}

Statement& append_key(Statement& statement, Line& line, const Source& warehouse, const Source& status,
                      StatusForm form) {
    statement.piece(ledger_head::key).literal(warehouse.read(line));
    statement.piece(u" and GId=").literal(line.value(u"Gid"));
    statement.piece(u" and Model1=").literal(line.value(u"Model1"));
    statement.piece(u" and Model2=").literal(line.value(u"Model2"));
    statement.piece(u" and Status=");
    return form == StatusForm::unquoted ? statement.unquoted(status.read(line)) : statement.literal(status.read(line));
}

Statement update_statement(Line& line, const StatementStyle& style, const Side& side) {
    Statement update;
    update.piece(ledger_head::update);
    update.piece(side.movement.counter_phrase).literal(side.quantity_in_update.read(line));
    update.piece(side.movement.on_hand_phrase).literal(side.quantity_in_update.read(line));
    if (style.update_overwrites_remarks) {
        update.piece(u",Remarks =").literal(line.value(style.remarks_column));
    }
    append_key(update, line, side.warehouse, side.status, style.status_in_update);
    return update;
}

Statement insert_statement(Line& line, const StatementStyle& style, const Side& side, TextView values_head) {
    Statement insert;
    insert.piece(ledger_head::insert)
        .piece(u"WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks) ");
    insert.piece(values_head).literal(side.warehouse.read(line));
    insert.piece(u",").literal(line.value(u"Gid"));
    insert.piece(u",").literal(line.value(u"Model1"));
    insert.piece(u",").literal(line.value(u"Model2"));
    insert.piece(u",").literal(side.status.read(line));
    insert.piece(u",").literal(line.value(u"Class"));
    insert.piece(u",").literal(line.value(u"Unit"));
    insert.piece(u",").literal(counter(line, side.quantity_in_insert, side.movement.received));
    insert.piece(u",").literal(counter(line, side.quantity_in_insert, side.movement.issued));
    insert.piece(u",").literal(counter(line, side.quantity_in_insert, side.movement.on_hand));
    insert.piece(u",").literal(line.value(style.remarks_column));
    insert.piece(u")");
    return insert;
}

Statement build_write(PostingFrame& frame, Line& line, const StatementStyle& style, const Side& side) {
    look_up(frame, line, style, side);
    return frame.lookup->eof() ? insert_statement(line, style, side) : update_statement(line, style, side);
}

void post(PostingFrame& frame, Line& line, const StatementStyle& style, const Side& side) {
    const Statement write = build_write(frame, line, style, side);
    if (style.lookup_close == LookupClose::before_write) frame.lookup->close();
    frame.execute(write);
    if (style.lookup_close == LookupClose::after_write) frame.lookup->close();
}

LedgerStatement recognize_ledger_statement(TextView statement) {
    if (statement.starts_with(ledger_head::update)) return {LedgerAction::update, {}};
    if (statement.starts_with(ledger_head::insert)) return {LedgerAction::insert, {}};
    const bool counts = statement.starts_with(ledger_head::count);
    if (!counts && !statement.starts_with(ledger_head::lookup)) return {};
    TextView rest = statement.substr(counts ? ledger_head::count.size() : ledger_head::lookup.size());
    while (rest.starts_with(u"  ")) rest.remove_prefix(1);  // some families write more blanks than one
    if (!rest.starts_with(ledger_head::key)) return {};
    return {counts ? LedgerAction::count : LedgerAction::look_up, rest.substr(1)};
}

}  // namespace vantlo
