#include "bills/field_use.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <functional>
#include <set>

#include "ado/native/native_connection.h"
#include "bookkeeping/call_arguments.h"
#include "component/inventory_class.h"
#include "dataaccess/sql_literals.h"
#include "dataaccess/unit_conversion.h"
#include "posting/ledger.h"

// The table of field uses, held against the members: each is called on a bill of which one field at a time changes.

namespace vantlo {
namespace {

constexpr std::int32_t unit_factor = 100;

/// A database of one bill, which every unit look-up answers with the same factor. It keeps the statements that it is sent.
class OneBillDatabase final : public NativeConnection {
public:
    OneBillDatabase(const Bill& bill, bool has_ledger_row) : bill_(bill), has_ledger_row_(has_ledger_row) {}

    ResultTable run(TextView statement) override {
        statements_.emplace_back(statement);
        const LedgerAction action = recognize_ledger_statement(statement).action;
        if (action == LedgerAction::count) return {{u"TempQty"}, {{has_ledger_row_ ? 1 : 0}}, true};
        if (action == LedgerAction::look_up && has_ledger_row_) return {{u"WID"}, {{u"W"}}, true};
        if (recognize_unit_lookup(statement)) return {{u"UnitConverter"}, {{unit_factor}}, true};
        ResultTable result{{}, {}, true};
        std::vector<Variant> row;
        const auto add = [&](const BillTable& table, const Record& record) {
            const auto has = [&](const Text& words) { return statement.find(words) != TextView::npos; };
            if (!has(Text(u" from ") + table.name + u" ") && !has(Text(u" join ") + table.name + u" ")) return;
            for (const Record::Field& field : record.fields()) {
                result.columns.emplace_back(field.column);
                row.push_back(field.value);
            }
        };
        add(*bill_.kind->lines, bill_.lines.front());  // first: where a join has a column twice, the line's counts
        add(*bill_.kind->header, bill_.header);
        if (!row.empty()) result.rows.push_back(std::move(row));
        return result;
    }
    void begin() override {}
    void commit() override {}
    void roll_back() override {}
    [[nodiscard]] Remedy remedy() const override { return Remedy::none; }
    [[nodiscard]] const Dialect& dialect() const override { return dialect_named("unknown"); }
    [[nodiscard]] std::string engine() const override { return "one bill"; }

    [[nodiscard]] const std::vector<Text>& statements() const { return statements_; }

private:
    ~OneBillDatabase() override = default;

    const Bill& bill_;
    bool has_ledger_row_;
    std::vector<Text> statements_;
};

/// The statements that the calls send for a bill of one line.
std::vector<Text> statements_of(std::span<const MemberCall> calls, const Bill& bill, bool has_ledger_row) {
    const Owned<OneBillDatabase> database(new OneBillDatabase(bill, has_ledger_row));
    Inventory_Class component;
    component.set_ADOConn(database.get());
    for (const MemberCall& call : calls) {
        RecordLine line(bill.lines.front(), bill.kind->warehouse_column);
        REQUIRE(component.call(*find_method(call.member), arguments_for(call, bill, &line)) == 0);
    }
    component.set_ADOConn(nullptr);
    return database->statements();
}

/// All statements of posting and taking back, with ledger rows and without.
std::vector<Text> statements_of(const Bill& bill) {
    std::vector<Text> all;
    for (const std::span<const MemberCall> calls : {bill.kind->post, bill.kind->reversal}) {
        for (const bool has_ledger_row : {false, true}) {
            for (Text& statement : statements_of(calls, bill, has_ledger_row)) all.push_back(std::move(statement));
        }
    }
    return all;
}

bool has(const std::vector<Text>& statements, const Text& words) {
    return std::ranges::any_of(statements, [&](const Text& statement) { return statement.find(words) != Text::npos; });
}

Record& record_of(Bill& bill, BillPart part) { return part == BillPart::header ? bill.header : bill.lines.front(); }

Variant planted(BillPart part, const BillColumn& column) {
    switch (column.type) {
        case ColumnType::text: return (part == BillPart::header ? u"header " : u"line ") + Text(column.column);
        case ColumnType::single: return part == BillPart::header ? 3.0F : 7.0F;
        case ColumnType::whole_number: return 1;
        case ColumnType::date: break;
    }
    return Date{45000};
}

Variant changed(const Variant& value) {
    if (const Text* const text = value.get_if<Text>()) return *text + u"'";
    if (value.is<float>()) return 11.0F;
    if (value.is<Date>()) return Date{45001};
    return 2;
}

/// A bill of one line in which no two texts are equal.
Bill planted_bill(const BillKind& kind) {
    Bill bill{&kind, u"B1", {}, {Record()}};
    for (const BillPart part : {BillPart::header, BillPart::line}) {
        for (const BillColumn& column : columns_of(kind, part))
            record_of(bill, part).set(column.column, planted(part, column));
    }
    return bill;
}

/// The bill with another value in all columns that a field fills.
Bill with(Bill bill, BillPart part, std::string_view field, const std::function<Variant(const Variant&)>& change) {
    Record& record = record_of(bill, part);
    for (const BillColumn& column : columns_of(*bill.kind, part)) {
        if (column.field == field) record.replace(column.column, change(record.value(column.column)));
    }
    return bill;
}

/// A field of one of the tables that several kinds share.
using TableField = std::pair<const BillTable*, std::string_view>;

TableField table_field(const BillKind& kind, BillPart part, std::string_view field) {
    return {part == BillPart::header ? kind.header : kind.lines, field};
}

TEST_CASE("The table of field uses is what the members do with each field of each kind") {
    std::set<TableField> read_by_some;
    std::set<std::pair<std::string_view, std::string>> read_by_kind;
    const auto name_of = [](BillPart part, std::string_view field) {
        return (part == BillPart::header ? "." : "") + std::string(field);
    };
    for (const BillKind& kind : bill_kinds()) {
        const Bill bill = planted_bill(kind);
        const std::vector<Text> plain = statements_of(bill);
        for (const BillPart part : {BillPart::header, BillPart::line}) {
            for (const BillColumn& column : columns_of(kind, part)) {
                INFO(kind.name, " ", name_of(part, column.field));
                const FieldUse& use = field_use_of(kind);
                const bool is_warehouse =
                    column.type == ColumnType::text && has(plain, u" where WID=" + GetSqlVal(planted(part, column)));
                CHECK(use.is_warehouse(part, column.field) == is_warehouse);
                if (statements_of(with(bill, part, column.field, changed)) == plain) continue;
                read_by_some.insert(table_field(kind, part, column.field));
                read_by_kind.emplace(kind.name, name_of(part, column.field));
            }
        }
    }
    for (const BillKind& kind : bill_kinds()) {
        for (const BillPart part : {BillPart::header, BillPart::line}) {
            for (const BillColumn& column : columns_of(kind, part)) {
                INFO(kind.name, " ", name_of(part, column.field));
                CHECK(field_use_of(kind).is_ignored(part, column.field) ==
                      (read_by_some.contains(table_field(kind, part, column.field)) &&
                       !read_by_kind.contains({kind.name, name_of(part, column.field)})));
            }
        }
    }
    CHECK(!read_by_some.contains(table_field(*find_bill_kind("stock"), BillPart::header, "date")));
    CHECK(std::ranges::equal(bill_kinds(), field_uses(), {}, &BillKind::name, &FieldUse::kind));
}

TEST_CASE("The kinds that convert quantities, and those that put two minus signs together, are those of the table") {
    for (const BillKind& kind : bill_kinds()) {
        CAPTURE(kind.name);
        const Bill bill = planted_bill(kind);
        CHECK(field_use_of(kind).converts_quantities == has(statements_of(bill), u"700"));
        CHECK(!has(statements_of(bill), u"300"));
        CHECK(field_use_of(kind).inserts_as_it_updates == (has(statements_of(kind.post, bill, false), u"700") ==
                                                           has(statements_of(kind.post, bill, true), u"700")));
        for (const BillPart part : {BillPart::header, BillPart::line}) {
            const Bill negative = with(bill, part, "quantity", zero_minus);
            CHECK(field_use_of(kind).puts_minus_signs_together(part) ==
                  has(statements_of(kind.reversal, negative, true), u"--"));
        }
    }
}

TEST_CASE("A bill's missing warehouses and ignored fields are its faults") {
    const BillKind& kind = *find_bill_kind("stock-in");
    Bill bill{&kind, u"B1", empty_record(kind.header->columns), {empty_record(kind.lines->columns)}};
    bill.lines[0].replace(u"Receiver", u"W1");
    CHECK(field_faults(bill).empty());
    bill.lines[0].replace(u"Receiver", u" ");
    bill.lines.push_back(empty_record(kind.lines->columns));
    bill.lines[1].replace(u"Receiver", u"W1");
    bill.lines[1].replace(u"Supplier", u"W2");
    const std::vector<FieldFault> faults = field_faults(bill);
    REQUIRE(faults.size() == 2);
    CHECK((faults[0].line == 1 && faults[0].field == "receiver" && faults[0].is_missing));
    CHECK((faults[1].line == 2 && faults[1].field == "supplier" && !faults[1].is_missing));
    const Bill of_a_host{&kind, u"B1", Record(), {Record()}};
    CHECK(field_faults(of_a_host).size() == 1);
}

}  // namespace
}  // namespace vantlo
