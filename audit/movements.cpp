#include "audit/movements.h"

#include <array>

#include "automation/error.h"

namespace vantlo {

namespace {

constexpr std::array<const char16_t*, quantity_columns.size()> change_columns = {u"InChange", u"OutChange",
                                                                                 u"CurrentChange"};
constexpr std::array<const char16_t*, quantity_columns.size()> after_columns = {u"InAfter", u"OutAfter",
                                                                                u"CurrentAfter"};
constexpr TextView key_list = u"WID,GId,Model1,Model2,Status";
constexpr TextView without_bill = u"BillId is null and Action not in ('opening','gap')";

Amounts read_changes(Recordset& rows) {
    Amounts changes;
    for (std::size_t i = 0; i < changes.size(); ++i)
        changes[i] = to_currency(rows.field(change_columns[i])).ten_thousandths();
    return changes;
}

LedgerKey key_of(Recordset& rows) {
    std::vector<BrokenValue> broken;
    return read_key(rows, broken);
}

Text text_of(const Variant& value) { return text_or_nothing(value).value_or(u""); }

Text sums_for(NativeConnection& database) {
    Text sums;
    for (const char16_t* const column : change_columns) {
        sums += u"," + replace_all(database.dialect().exact_sum, u'?', column) + u" as " + column;
    }
    return sums;
}

void read_opening(NativeConnection& database, Movements& movements) {
    const RecordsetVariable rows =
        database.execute(u"select * from StockMovement where Action='opening' order by MovementNo");
    for (; !rows->eof(); rows->move_next()) {
        LedgerEntry entry;
        entry.key = key_of(*rows);
        const Amounts changes = read_changes(*rows);
        for (std::size_t i = 0; i < changes.size(); ++i) {
            if (!rows->field(after_columns[i]).is<Null>()) entry.quantities[i] = changes[i];
        }
        entry.details.fill(Null{});
        movements.opening.push_back(std::move(entry));
        const Variant moved_at = rows->field(u"MovedAt");
        if (const Date* const date = moved_at.get_if<Date>()) movements.opened_at = *date;
    }
}

void read_sums(NativeConnection& database, Movements& movements) {
    const Text sums = sums_for(database);
    const auto select = [&](const Text& more, TextView condition) {
        return database.execute(u"select count(*) as N," + Text(key_list) + more + sums +
                                u" from StockMovement where " + Text(condition) + u" group by " + Text(key_list) +
                                more);
    };
    const RecordsetVariable loose = select(u",Action", u"BillId is null");
    for (; !loose->eof(); loose->move_next()) {
        const LedgerKey key = key_of(*loose);
        const Amounts changes = read_changes(*loose);
        const Text action = text_of(loose->field(u"Action"));
        add_to(movements.all, key, changes);
        if (action == u"opening") continue;
        add_to(action == u"gap" ? movements.gap : movements.loose, key, changes);
        if (action != u"gap") movements.loose_counts[key] += static_cast<std::size_t>(to_long(loose->field(u"N")));
    }
    const RecordsetVariable named = database.execute(u"select count(*) as N,BillKind,BillId," + Text(key_list) + sums +
                                                     u" from StockMovement where BillId is not null group by BillKind,"
                                                     u"BillId," +
                                                     Text(key_list));
    for (; !named->eof(); named->move_next()) {
        const LedgerKey key = key_of(*named);
        const Amounts changes = read_changes(*named);
        add_to(movements.all, key, changes);
        BillMovements& bill =
            movements.of_bills[{text_of(named->field(u"BillKind")), text_of(named->field(u"BillId"))}];
        add_to(bill.moved, key, changes);
        bill.count += static_cast<std::size_t>(to_long(named->field(u"N")));
    }
}

}  // namespace

Movements read_movements(NativeConnection& database) {
    Movements movements;
    movements.state = JournalState::on;
    try {
        movements.state = journal_state(database);
        if (!has_movements(movements.state)) return movements;
        read_opening(database, movements);
        read_sums(database, movements);
    } catch (const Failure& failure) {
        if (failure.number() != error::permission_denied && failure.number() != error::no_such_table) throw;
        Movements unread;
        unread.state = movements.state;
        return unread;
    }
    movements.is_readable = true;
    return movements;
}

LooseMovements loose_movements(NativeConnection& database, const LedgerKey& key, const Movements& movements) {
    constexpr std::size_t most = 100;
    const auto total = movements.loose.find(key);
    if (total == movements.loose.end()) return {};
    Text condition = condition_of(key) + u" and " + Text(without_bill);
    const bool is_cut = movements.loose_counts.at(key) > most;
    if (is_cut) {
        condition +=
            u" and MovementNo>=(select min(MovementNo) from (select MovementNo,row_number() over (order by "
            u"MovementNo desc) as Place from StockMovement where " +
            condition + u") latest where Place<=" + from_utf8(std::to_string(most)) + u")";
    }
    LooseMovements loose;
    Amounts sum = total->second;  // before the first that is read
    const RecordsetVariable rows =
        database.execute(u"select * from StockMovement where " + condition + u" order by MovementNo");
    for (; !rows->eof(); rows->move_next()) {
        LooseMovement movement;
        const Variant moved_at = rows->field(u"MovedAt");
        if (const Date* const date = moved_at.get_if<Date>()) movement.moved_at = *date;
        movement.action = text_of(rows->field(u"Action"));
        movement.user = text_of(rows->field(u"DbUser"));
        movement.program = text_of(rows->field(u"Program"));
        movement.change = read_changes(*rows);
        for (std::size_t i = 0; i < after_columns.size(); ++i) movement.after[i] = rows->field(after_columns[i]);
        sum = sum - movement.change;
        loose.latest.push_back(std::move(movement));
    }
    loose.has_earlier = is_cut && sum != Amounts{};
    std::size_t from = 0;
    for (std::size_t i = 0; i < loose.latest.size(); ++i) {
        sum = sum + loose.latest[i].change;
        if (sum == Amounts{}) from = i + 1;
    }
    loose.latest.erase(loose.latest.begin(), loose.latest.begin() + static_cast<std::ptrdiff_t>(from));
    if (from > 0) loose.has_earlier = false;
    return loose;
}

std::map<std::pair<LedgerKey, Amounts>, std::size_t> loose_steps(NativeConnection& database) {
    std::map<std::pair<LedgerKey, Amounts>, std::size_t> steps;
    const Text columns = Text(key_list) + u",InChange,OutChange,CurrentChange";
    const RecordsetVariable rows = database.execute(u"select count(*) as N," + columns + u" from StockMovement where " +
                                                    Text(without_bill) + u" group by " + columns);
    for (; !rows->eof(); rows->move_next()) {
        steps[{key_of(*rows), read_changes(*rows)}] += static_cast<std::size_t>(to_long(rows->field(u"N")));
    }
    return steps;
}

}  // namespace vantlo
