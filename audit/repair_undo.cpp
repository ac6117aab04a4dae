#include "audit/repair_undo.h"

#include "audit/repair.h"
#include "automation/calendar.h"
#include "automation/error.h"
#include "bills/schema.h"
#include "bookkeeping/posting_note.h"

namespace vantlo {

namespace {

Text text_or_empty(const Variant& value) {
    if (value.is<Null>()) return {};
    const Date* const date = value.get_if<Date>();
    return date == nullptr ? to_text(value) : format_date_time(*date);
}

/// Nothing also where there is no journal, or this account may not read it.
std::optional<MovedRows::Movement> latest_movement(NativeConnection& database, const Text& condition) {
    std::optional<MovedRows::Movement> latest;
    try {
        if (!has_table(database, "StockMovement")) return std::nullopt;
        const RecordsetVariable rows =
            database.execute(u"select * from StockMovement where " + condition + u" order by MovementNo");
        for (; !rows->eof(); rows->move_next()) {
            const auto text = [&](TextView column) { return text_or_empty(rows->field(column)); };
            latest = {text(u"MovedAt"), text(u"DbUser"), text(u"Program"), text(u"BillKind")};
            if (!latest->bill.empty()) latest->bill += u" " + text(u"BillId");
        }
    } catch (const Failure&) {
        return std::nullopt;
    }
    if (latest && latest->program.starts_with(repair_program)) return std::nullopt;
    return latest;
}

}  // namespace

UndoPlan plan_undo(NativeConnection& database, std::int64_t number) {
    UndoPlan plan{read_repair(database, number), {}, {}, {}};
    const RowImages images(database);
    for (const KeyRepair& key : plan.record.keys) {
        const Text condition = key.condition();
        std::vector<RowImage> now = images.of(condition);
        if (!are_same_rows(now, key.after)) {
            plan.moved.push_back({condition, key.after, std::move(now), latest_movement(database, condition)});
            continue;
        }
        if (key.before.size() == 1 && key.after.size() == 1) {
            const Text update = RowImages::update_of(key.after.front(), key.before.front());
            if (!update.empty()) plan.statements.push_back(update);
            continue;
        }
        if (!key.after.empty()) plan.removals.push_back(u"delete from Inventory where " + condition);
        for (const RowImage& row : key.before) plan.statements.push_back(images.insertion_of(row));
    }
    return plan;
}

UndoOutcome run_undo(NativeConnection& database, std::int64_t undone, const UndoPlan& plan, const Text& cause) {
    const RowImages images(database);
    UndoOutcome outcome{next_repair_number(database), {}};
    PostingNote note;
    note.begin(database);
    note.begin_program(program_of_repair(outcome.number));
    for (const Text& statement : plan.removals) database.run(statement);
    for (const Text& statement : plan.statements) database.run(statement);
    note.end_program();
    for (const KeyRepair& key : plan.record.keys) {
        const Text condition = key.condition();
        const std::vector<RowImage> now = images.of(condition);
        if (!are_same_rows(now, key.before)) outcome.unlike.push_back(condition);
        enter_repair(database, outcome.number, {cause, key.after, now}, undone);
    }
    return outcome;
}

}  // namespace vantlo
