#include "audit/member_sample.h"

#include <algorithm>
#include <stdexcept>

#include "ado/native/open_connection.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"
#include "bookkeeping/rehearsal.h"
#include "component/inventory_class.h"

namespace vantlo {

namespace {

constexpr TextView bill_id = u"B1";
constexpr std::int32_t unit_factor = 100;
constexpr std::int32_t first_quantity = 2;  // every quantity of the sample stays below the factor
constexpr std::int16_t tried_statuses = 8;  // 0 to 7; no status and no kind of conversion is as high as 7

/// With the factor 0.006; a member that rounds it to 0.0001 first makes 0.01 of it.
constexpr float below_four_decimals = 0.00006F;
constexpr Currency rounded_once = Currency::from_ten_thousandths(60);

using Counters = std::array<std::optional<Currency>, 3>;  // in the order of Counter; no value for null

// Of an existing row: further apart than any quantity that is posted.
constexpr Counters start = {Currency::from_whole(20000), Currency::from_whole(40000), Currency::from_whole(80000)};
constexpr TextView set_to_start = u"update Inventory set InQty=20000,OutQty=40000,CurrentQty=80000,Remarks='before'";

struct SampleRow {
    Text warehouse;
    Text status;
    Counters counters;
    Text remarks;
};

/// One call of the member: its arguments and the bill that it finds.
struct Trial {
    std::vector<Variant> arguments;  // Empty stands for the line
    Record header;
    Record line;
    bool is_stored = false;   // the bill
    bool rows_exist = false;  // those of the ledger
};

struct Outcome {
    std::int32_t result;
    std::vector<SampleRow> rows;
};

const BillKind& kind_posted_by(const Member& method) {
    const auto is_called = [&](const MemberCall& call) { return TextView(call.member) == method.name; };
    for (const BillKind& kind : bill_kinds()) {
        if (std::ranges::any_of(kind.post, is_called) || std::ranges::any_of(kind.reversal, is_called)) return kind;
    }
    throw std::logic_error("no kind of bill calls " + to_utf8(method.name));
}

std::vector<SampleRow> ledger_by_insertion(Connection& database) {
    std::vector<SampleRow> ledger;
    const RecordsetVariable rows = database.execute(u"select * from Inventory order by rowid");
    for (; !rows->eof(); rows->move_next()) {
        const auto text = [&](TextView column) { return to_text(rows->field(column)); };
        const auto counter = [&](TextView column) {
            const Variant value = rows->field(column);
            return value.is<Null>() ? std::nullopt : std::optional(to_currency(value));
        };
        const Counters counters = {counter(u"InQty"), counter(u"OutQty"), counter(u"CurrentQty")};
        ledger.push_back({text(u"WID"), text(u"Status"), counters, text(u"Remarks")});
    }
    return ledger;
}

/// A member, with the database and the bill on which it is tried.
class Sample {
public:
    explicit Sample(const Member& method);

    MemberSample study();

private:
    struct Planted {
        Origin origin;
        Variant value;
    };

    Record plant(std::span<const BillColumn> columns, Origin::Place place);
    void note_planted(Origin::Place place, TextView name, const Variant& value);
    void plant_arguments();
    void save_master_data();

    [[nodiscard]] Trial with(const Origin& origin, const Variant& value) const;
    /// `change` makes the new quantity of a field from its planted one.
    [[nodiscard]] Trial with_quantities(Variant (*change)(const Variant& planted)) const;
    [[nodiscard]] Outcome run(const Trial& trial) const;
    [[nodiscard]] std::int32_t call(Inventory_Class& component, const Trial& trial) const;

    [[nodiscard]] Origin origin_of(const Text& warehouse) const;
    [[nodiscard]] Origin origin_of(std::int64_t quantity) const;
    [[nodiscard]] RowRule row_rule(const Counters& before, const Counters& after) const;

    void study_movements();
    void study_status(const Origin& origin);
    void study_filter(const Parameter& parameter);
    void study_sign();
    void study_rounding();
    void study_null();

    const Member& method_;
    BillKind kind_;
    Owned<NativeConnection> database_;
    std::vector<Planted> planted_;  // texts and quantities, no two of which are equal
    Record goods_;
    Trial base_;
    Outcome base_outcome_{};
    MemberSample found_;
};

Sample::Sample(const Member& method)
    : method_(method), kind_(kind_posted_by(method)), database_(open_connection("sqlite::memory:")) {
    kind_.post = {};  // saving a bill stores it, and nothing more
    database_->run_script(schema_for("sqlite"));
    base_.is_stored = method.parameters().front().type != ParameterType::line;
    base_.header = plant(kind_.header->columns, Origin::Place::header);
    base_.line = plant(kind_.lines->columns, Origin::Place::line);
    plant_arguments();
    save_master_data();
    if (base_.is_stored || kind_.warehouse_column == nullptr) return;
    base_.line.set(u"WarehouseId", u"line WarehouseId");
    note_planted(Origin::Place::line, u"WarehouseId", u"line WarehouseId");
}

Record Sample::plant(std::span<const BillColumn> columns, Origin::Place place) {
    Record record;
    for (const BillColumn& column : columns) {
        Variant value = empty_value(column.type);
        if (column.type == ColumnType::text)
            value = Text(place == Origin::Place::line ? u"line " : u"header ") + column.column;
        if (column.type == ColumnType::single)
            value = static_cast<float>(first_quantity + static_cast<std::int32_t>(planted_.size()));
        record.set(column.column, value);
        if (value != empty_value(column.type)) note_planted(place, column.column, value);
    }
    return record;
}

void Sample::note_planted(Origin::Place place, TextView name, const Variant& value) {
    Planted& planted = planted_.emplace_back();
    planted.origin.place = place;
    planted.origin.name = name;
    planted.value = value;
}

void Sample::plant_arguments() {
    base_.arguments.push_back(base_.is_stored ? Variant(Text(bill_id)) : Variant());
    for (const Parameter& parameter : method_.parameters().subspan(1)) {
        if (parameter.optional || parameter.type != ParameterType::text) {
            base_.arguments.push_back(parameter.default_value());
        } else {
            base_.arguments.emplace_back(Text(u"argument ") + parameter.name);
            note_planted(Origin::Place::argument, parameter.name, base_.arguments.back());
        }
    }
}

/// The goods of the line, and the units of line and header.
void Sample::save_master_data() {
    std::vector<MasterRow> rows;
    const MasterTable& units = *find_master_table("units");
    for (const char16_t* const place : {u"line ", u"header "}) {
        Record unit;
        unit.set(u"id", Text(place) + u"Gid");
        unit.set(u"Unit", Text(place) + u"Unit");
        unit.set(u"UnitConverter", static_cast<float>(unit_factor));
        rows.push_back({&units, unit});
    }
    const MasterTable& goods = *find_master_table("goods");
    for (const BillColumn& column : goods.columns) {
        goods_.set(column.column, column.type == ColumnType::text ? Variant(Text(column.column)) : std::int32_t{1});
    }
    goods_.replace(u"ID", Text(u"line Gid"));
    rows.push_back({&goods, goods_});
    Bookkeeping([&] { return database_; }).save_master(rows);
}

Trial Sample::with(const Origin& origin, const Variant& value) const {
    Trial trial = base_;
    if (origin.place == Origin::Place::header) trial.header.replace(origin.name, value);
    if (origin.place == Origin::Place::line) trial.line.replace(origin.name, value);
    for (std::size_t i = 0; i < trial.arguments.size() && origin.place == Origin::Place::argument; ++i) {
        if (method_.parameters()[i].name == origin.name) trial.arguments[i] = value;
    }
    return trial;
}

Trial Sample::with_quantities(Variant (*change)(const Variant& planted)) const {
    Trial trial = base_;
    for (const auto& [origin, value] : planted_) {
        if (!value.is<float>()) continue;
        (origin.place == Origin::Place::header ? trial.header : trial.line).replace(origin.name, change(value));
    }
    return trial;
}

Outcome Sample::run(const Trial& trial) const {
    // A rehearsal, so that the next trial finds the database as this one did.
    const Owned<NativeConnection> rehearsal = rehearsing([&] { return database_; })();
    rehearsal->begin();
    if (trial.is_stored) {
        Bookkeeping([&] { return rehearsal; }).save({&kind_, Text(bill_id), trial.header, {trial.line}});
    }
    Inventory_Class component;
    component.let_DATAType(u"[Microsoft SQL Server]");
    component.set_ADOConn(rehearsal.get());
    Outcome outcome{call(component, trial), {}};
    if (trial.rows_exist) {
        rehearsal->run(set_to_start);
        outcome.result = call(component, trial);
    }
    component.set_ADOConn(nullptr);
    outcome.rows = ledger_by_insertion(*rehearsal);
    return outcome;
}

std::int32_t Sample::call(Inventory_Class& component, const Trial& trial) const {
    RecordLine line(trial.line, nullptr);
    std::vector<Argument> arguments;
    for (const Variant& argument : trial.arguments) {
        if (argument.is<Empty>())
            arguments.emplace_back(line);
        else
            arguments.emplace_back(argument);
    }
    return component.call(method_, arguments);
}

MemberSample Sample::study() {
    base_outcome_ = run(base_);
    if (base_outcome_.result != 0) throw std::logic_error("the sample bill cannot be posted");
    study_movements();
    for (const BillColumn& column : kind_.header->columns) {
        if (column.type == ColumnType::whole_number) study_status({Origin::Place::header, column.column});
    }
    for (const BillColumn& column : kind_.lines->columns) {
        if (column.type == ColumnType::whole_number) study_status({Origin::Place::line, column.column});
    }
    for (const Parameter& parameter : method_.parameters()) {
        if (parameter.type == ParameterType::integer || parameter.type == ParameterType::long_integer)
            study_status({Origin::Place::argument, parameter.name});
        if (parameter.optional && parameter.type != ParameterType::boolean) study_filter(parameter);
    }
    study_sign();
    study_rounding();
    study_null();
    if (base_.is_stored) {
        Trial without_bill = base_;
        without_bill.is_stored = false;
        found_.result_without_bill = run(without_bill).result;
    }
    return found_;
}

void Sample::study_movements() {
    Trial on_existing_rows = base_;
    on_existing_rows.rows_exist = true;
    const std::vector<SampleRow> existing = run(on_existing_rows).rows;
    constexpr Counters zero = {Currency(), Currency(), Currency()};
    for (std::size_t i = 0; i < base_outcome_.rows.size(); ++i) {
        const SampleRow& row = base_outcome_.rows[i];
        found_.movements.push_back({origin_of(row.warehouse),
                                    {{Origin::Place::constant, row.status}, {}},
                                    row_rule(zero, row.counters),
                                    row_rule(start, existing.at(i).counters),
                                    existing.at(i).remarks != u"before"});
    }
}

Origin Sample::origin_of(const Text& warehouse) const {
    for (const auto& [origin, value] : planted_) {
        if (value == Variant(warehouse)) return origin;
    }
    throw std::logic_error("a warehouse that the sample does not name");
}

Origin Sample::origin_of(std::int64_t quantity) const {
    for (const auto& [origin, value] : planted_) {
        if (value == Variant(static_cast<float>(quantity))) return origin;
    }
    throw std::logic_error("a quantity that the sample does not hold");
}

RowRule Sample::row_rule(const Counters& before, const Counters& after) const {
    RowRule rule{};
    std::int64_t amount = 0;
    for (std::size_t counter = 0; counter < after.size(); ++counter) {
        // The counter itself first: the counters of a new row all start at the same value.
        for (const std::size_t from : {counter, std::size_t{0}, std::size_t{1}, std::size_t{2}}) {
            const Currency added = after.at(counter).value() - before.at(from).value();
            if (absolute(added) >= Currency::from_whole(10000)) continue;
            const int sign = added > Currency() ? +1 : added < Currency() ? -1 : 0;
            rule.counters.at(counter) = {static_cast<Counter>(from), sign};
            if (sign != 0) amount = absolute(added).ten_thousandths() / Currency::scale;
            break;
        }
    }
    rule.in_base_units = amount >= unit_factor;
    rule.quantity = origin_of(rule.in_base_units ? amount / unit_factor : amount);
    return rule;
}

/// Tries the values of a number one after the other: a movement whose status follows them takes it from there.
void Sample::study_status(const Origin& origin) {
    std::vector<std::vector<Text>> statuses(found_.movements.size());
    std::vector<Text> as_given;
    for (std::int16_t value = 0; value < tried_statuses; ++value) {
        const std::vector<SampleRow> rows = run(with(origin, value)).rows;
        if (rows.size() != statuses.size()) return;  // the number filters the lines
        for (std::size_t i = 0; i < rows.size(); ++i) statuses[i].push_back(rows[i].status);
        as_given.push_back(to_text(value));
    }
    for (std::size_t i = 0; i < statuses.size(); ++i) {
        const bool is_constant = std::ranges::count(statuses[i], statuses[i].front()) == tried_statuses;
        if (is_constant) continue;
        found_.movements[i].status = {origin, statuses[i] == as_given ? std::vector<Text>() : statuses[i]};
    }
}

/// A parameter filters if one value leaves the line out, and the one that its goods have in some column does not.
void Sample::study_filter(const Parameter& parameter) {
    const Origin origin{Origin::Place::argument, parameter.name};
    const bool is_text = parameter.type == ParameterType::text;
    const Variant other = is_text ? Variant(u"of no goods") : std::int16_t{0};
    if (!run(with(origin, other)).rows.empty()) return;
    for (const auto& [column, value] : goods_.fields()) {
        if (value.is<Text>() != is_text || run(with(origin, value)).rows.empty()) continue;
        found_.filters.push_back({parameter.name, Text(column)});
    }
}

void Sample::study_sign() {
    const Trial negative = with_quantities(zero_minus);
    const auto posts_as_positive = [&](const Trial& trial) {
        return run(trial).rows.front().counters == base_outcome_.rows.front().counters;
    };
    if (posts_as_positive(negative)) found_.sign_of_quantity = MemberSample::Sign::dropped;
    for (std::size_t i = 0; i < method_.parameters().size(); ++i) {
        if (method_.parameters()[i].type != ParameterType::boolean) continue;
        Trial requested = negative;
        requested.arguments[i] = static_cast<std::int16_t>(VariantBool::exactly_true);
        if (!posts_as_positive(requested)) continue;
        found_.sign_of_quantity = MemberSample::Sign::dropped_on_request;
        found_.magnitude_parameter = method_.parameters()[i].name;
    }
}

void Sample::study_rounding() {
    const auto below = [](const Variant&) { return Variant(below_four_decimals); };
    const Counters counters = run(with_quantities(below)).rows.front().counters;
    found_.is_rounded_once = std::ranges::find(counters, std::optional(rounded_once)) != counters.end();
}

void Sample::study_null() {
    Trial null = with_quantities([](const Variant&) { return Variant(Null{}); });
    null.rows_exist = true;
    if (run(null).result == 0) found_.null_quantity = MemberSample::NullQuantity::empties_counters;
}

}  // namespace

MemberSample sample_member(const Member& method) { return Sample(method).study(); }

}  // namespace vantlo
