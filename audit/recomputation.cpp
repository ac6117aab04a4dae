#include "audit/recomputation.h"

#include <map>
#include <set>

#include "ado/native/open_connection.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"

namespace vantlo {

namespace {

// The engine itself notes what each statement adds to each row, without a word in the component.
constexpr const char* note_steps = R"sql(
create table PostingStep (Entry integer, InQty money, OutQty money, CurrentQty money);
create trigger StepInserted after insert on Inventory begin
    insert into PostingStep values (new.rowid, new.InQty, new.OutQty, new.CurrentQty);
end;
create trigger StepUpdated after update on Inventory begin
    insert into PostingStep values (new.rowid, new.InQty - old.InQty, new.OutQty - old.OutQty,
                                    new.CurrentQty - old.CurrentQty);
end;
)sql";

/// The factors, as they stand; of two that the component cannot tell apart it takes the first that it finds.
void copy_units(NativeConnection& from, NativeConnection& to) {
    const RecordsetVariable rows = from.execute(u"select id,Unit,UnitConverter from GoodsUnit");
    const auto literal = [&](TextView column) {
        const Variant value = rows->field(column);
        return value.is<Null>() ? Text(u"null") : exact_literal(to_text(value));
    };
    for (; !rows->eof(); rows->move_next()) {
        to.run(u"insert or ignore into GoodsUnit(id,Unit,UnitConverter) values(" + literal(u"id") + u"," +
               literal(u"Unit") + u"," + literal(u"UnitConverter") + u")");
    }
}

}  // namespace

Recomputation recompute(NativeConnection& database, const BillTimeline& timeline, Language language) {
    const Owned<NativeConnection> memory = open_connection("sqlite::memory:");
    memory->run_script(schema_for("sqlite"));
    memory->run_script(note_steps);
    copy_units(database, *memory);

    Bookkeeping bookkeeping([&] { return memory; }, {}, language);
    Recomputation result;
    std::vector<std::int32_t> rowid_of_step;
    std::set<std::pair<const BillKind*, Text>> refused;
    for (std::size_t event = 0; event < timeline.events.size(); ++event) {
        const auto& [action, bill, is_recorded] = timeline.events[event];
        const std::pair name{bill.kind, bill.id};
        try {
            if (action == BillEvent::Action::save) {
                refused.erase(name);
                bookkeeping.save(bill);
            } else if (!refused.contains(name)) {
                bookkeeping.reverse(*bill.kind, bill.id);
            }
        } catch (const PostingFailed& failure) {
            refused.insert(name);
            result.refusals.push_back({event, failure.what()});
            continue;
        }
        const RecordsetVariable steps = memory->execute(u"select * from PostingStep order by rowid");
        if (steps->eof()) continue;
        for (; !steps->eof(); steps->move_next()) {
            const auto added = [&](TextView column) { return to_currency(steps->field(column)).ten_thousandths(); };
            result.steps.push_back({event, 0, {added(u"InQty"), added(u"OutQty"), added(u"CurrentQty")}});
            rowid_of_step.push_back(to_long(steps->field(u"Entry")));
        }
        memory->run(u"delete from PostingStep");
    }

    std::map<std::int32_t, std::size_t> row_of;
    const RecordsetVariable rows = memory->execute(u"select rowid as Entry,Inventory.* from Inventory order by rowid");
    for (; !rows->eof(); rows->move_next()) {
        row_of[to_long(rows->field(u"Entry"))] = result.rows.size();
        result.rows.push_back(read_entry(*rows));
    }
    for (std::size_t i = 0; i < result.steps.size(); ++i) result.steps[i].row = row_of.at(rowid_of_step[i]);
    return result;
}

}  // namespace vantlo
