#include "posting/ledger.h"

#include "dataaccess/recordsets.h"

namespace vantlo {

namespace {

void look_up(Connection* connection, RecordsetVariable& lookup, Line& line, const Wording& wording, const Side& side) {
    Statement select;
    select.piece(wording.lookup_head);
    append_key(select, line, side.warehouse, side.status, wording.status_in_lookup);
    if (wording.lookup_by == LookupBy::open) {
        held(lookup).open(select.text());
    } else {
        lookup = execute(connection, select);
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
    statement.piece(u" where WID=").literal(warehouse.read(line));
    statement.piece(u" and GId=").literal(line.value(u"Gid"));
    statement.piece(u" and Model1=").literal(line.value(u"Model1"));
    statement.piece(u" and Model2=").literal(line.value(u"Model2"));
    statement.piece(u" and Status=");
    return form == StatusForm::digits ? statement.digits(status.read(line)) : statement.literal(status.read(line));
}

Statement update_statement(Line& line, const Wording& wording, const Side& side) {
    Statement update;
    update.piece(u"update Inventory set ");
    update.piece(side.movement.counter_phrase).literal(side.quantity_in_update.read(line));
    update.piece(side.movement.on_hand_phrase).literal(side.quantity_in_update.read(line));
    if (wording.update_overwrites_remarks) {
        update.piece(u",Remarks =").literal(line.value(wording.remarks_column));
    }
    append_key(update, line, side.warehouse, side.status, wording.status_in_update);
    return update;
}

Statement insert_statement(Line& line, const Wording& wording, const Side& side, TextView values_head) {
    Statement insert;
    insert.piece(u"insert into Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks) ");
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
    insert.piece(u",").literal(line.value(wording.remarks_column));
    insert.piece(u")");
    return insert;
}

Statement look_up_and_word(Connection* connection, RecordsetVariable& lookup, Line& line, const Wording& wording,
                           const Side& side) {
    look_up(connection, lookup, line, wording, side);
    return lookup->eof() ? insert_statement(line, wording, side) : update_statement(line, wording, side);
}

void post(Connection* connection, RecordsetVariable& lookup, Line& line, const Wording& wording, const Side& side) {
    const Statement write = look_up_and_word(connection, lookup, line, wording, side);
    if (wording.lookup_close == LookupClose::before_write) lookup->close();
    execute(connection, write);
    if (wording.lookup_close == LookupClose::after_write) lookup->close();
}

}  // namespace vantlo
