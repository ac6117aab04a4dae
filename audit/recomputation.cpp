#include "audit/recomputation.h"

#include <map>
#include <set>

#include "ado/native/open_connection.h"
#include "automation/number_text.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"

namespace vantlo {

namespace {

// Triggers record what each statement adds to each row; the component is not changed for it.
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

/// Copies the unit factors; of duplicates the first counts, as in the component.
void copy_units(NativeConnection& from, NativeConnection& to) {
    const RecordsetVariable rows = from.execute(u"select id,Unit,UnitConverter from GoodsUnit");
    const auto literal = [&](TextView column) {
        const Variant value = rows->field(column);
        // What has no text fails in the component as it does in the database.
        return value.is<Null>() ? Text(u"null") : exact_literal(text_or_nothing(value).value_or(u"?"));
    };
    for (; !rows->eof(); rows->move_next()) {
        to.run(u"insert or ignore into GoodsUnit(id,Unit,UnitConverter) values(" + literal(u"id") + u"," +
               literal(u"Unit") + u"," + literal(u"UnitConverter") + u")");
    }
}

/// An account without the line ends behind it.
std::string without_line_ends(std::string account) {
    account.erase(account.find_last_not_of("\r\n") + 1);
    return account;
}

Text opening_statement(const LedgerEntry& entry) {
    Text values;
    for (const std::optional<Text>& part : entry.key.parts) {
        values += (values.empty() ? u"" : u",") + (part ? exact_literal(*part) : u"null");
    }
    for (const std::optional<std::int64_t>& quantity : entry.quantities) {
        values += u"," + (quantity ? number_text(Currency::from_ten_thousandths(*quantity)) : u"null");
    }
    return u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values(" + values + u")";
}

Text factor_statement(const UnitFactor& factor) {
    return u"insert or replace into GoodsUnit(id,Unit,UnitConverter) values(" + exact_literal(factor.goods) + u"," +
           exact_literal(factor.unit) + u"," + number_text(factor.factor) + u")";
}

/// Posts the events of a timeline in a database of its own, and keeps what each of them added to which row.
class Replay {
public:
    Replay(NativeConnection& units, Language language, const std::vector<LedgerEntry>& opening,
           const std::vector<UnitFactor>& other_factors)
        : memory_(open_connection("sqlite::memory:")),
          bookkeeping_([this] { return memory_; }, {}, language),
          language_(language) {
        memory_->run_script(schema_for("sqlite"));
        copy_units(units, *memory_);
        for (const UnitFactor& factor : other_factors) memory_->run(factor_statement(factor));
        for (const LedgerEntry& entry : opening) memory_->run(opening_statement(entry));
        memory_->run_script(note_steps);
    }

    Recomputation run(const BillTimeline& timeline) {
        for (std::size_t event = 0; event < timeline.events.size(); ++event) {
            if (is_posted(timeline.events[event], event)) read_steps(event);
        }
        read_rows();
        return std::move(result_);
    }

private:
    /// Posts one event. Returns false if the component does not post its bill.
    bool is_posted(const BillEvent& event, std::size_t number) {
        const Bill& bill = event.bill;
        const std::pair name{bill.kind, bill.id};
        try {
            if (event.action == BillEvent::Action::save) {
                refused_.erase(name);
                bookkeeping_.save(bill);
            } else if (!refused_.contains(name)) {
                bookkeeping_.reverse(*bill.kind, bill.id);
            }
            return true;
        } catch (const TaskError& error) {
            if (error.reason() == Reason::interrupted) throw;
            refused_.insert(name);
            result_.refusals.push_back({number, without_line_ends(error.what())});
        } catch (const Failure& failure) {  // of a statement that a broken value makes
            refused_.insert(name);
            result_.refusals.push_back({number, account_of(failure, language_)});
        }
        return false;
    }

    /// Takes over what the latest event added.
    void read_steps(std::size_t event) {
        const RecordsetVariable steps = memory_->execute(u"select * from PostingStep order by rowid");
        if (steps->eof()) return;
        for (; !steps->eof(); steps->move_next()) {
            const auto added = [&](TextView column) { return to_currency(steps->field(column)).ten_thousandths(); };
            result_.steps.push_back({event, 0, {added(u"InQty"), added(u"OutQty"), added(u"CurrentQty")}});
            rowid_of_step_.push_back(to_long(steps->field(u"Entry")));
        }
        memory_->run(u"delete from PostingStep");
    }

    /// Takes over the rows, and tells each step its row.
    void read_rows() {
        std::map<std::int32_t, std::size_t> row_of;
        const RecordsetVariable rows =
            memory_->execute(u"select rowid as Entry,Inventory.* from Inventory order by rowid");
        for (; !rows->eof(); rows->move_next()) {
            row_of[to_long(rows->field(u"Entry"))] = result_.rows.size();
            result_.rows.push_back(read_entry(*rows));
        }
        for (std::size_t i = 0; i < result_.steps.size(); ++i) result_.steps[i].row = row_of.at(rowid_of_step_[i]);
    }

    Owned<NativeConnection> memory_;
    Bookkeeping bookkeeping_;
    Language language_;
    std::set<std::pair<const BillKind*, Text>> refused_;
    std::vector<std::int32_t> rowid_of_step_;
    Recomputation result_;
};

}  // namespace

Recomputation recompute(NativeConnection& database, const BillTimeline& timeline, Language language,
                        const std::vector<LedgerEntry>& opening, const std::vector<UnitFactor>& other_factors) {
    return Replay(database, language, opening, other_factors).run(timeline);
}

}  // namespace vantlo
