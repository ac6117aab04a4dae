#include "audit/unconverted_columns.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "bills/bill_kinds.h"
#include "component/inventory_class.h"
#include "posting/ledger.h"

namespace vantlo {

namespace {

bool reads_from(TextView statement, const BillTable& table) {
    const auto has = [&](const Text& words) { return statement.find(words) != TextView::npos; };
    return has(Text(u" from ") + table.name + u" ") || has(Text(u" join ") + table.name + u" ");
}

/// The tables of all bills, those of lines first: where a join has a column twice, a line's counts.
std::vector<const BillTable*> bill_tables() {
    std::vector<const BillTable*> tables;
    const auto add = [&](const BillTable* table) {
        if (std::ranges::find(tables, table) == tables.end()) tables.push_back(table);
    };
    for (const BillKind& kind : bill_kinds()) add(kind.lines);
    for (const BillKind& kind : bill_kinds()) add(kind.header);
    return tables;
}

Variant plain_seven(ColumnType type) {
    switch (type) {
        case ColumnType::single: return 7.0F;
        case ColumnType::whole_number: return 7;
        case ColumnType::date: return Date{7};
        case ColumnType::text: break;
    }
    return u"7";
}

/// A database in which every bill table has one row with the value 7 in every column, and no other table has any. In one
/// column the 7 is of a type without a literal.
class SevensDatabase final : public NativeConnection {
public:
    SevensDatabase(bool has_ledger_row, TextView table, TextView column)
        : has_ledger_row_(has_ledger_row), table_(table), column_(column) {}

    ResultTable run(TextView statement) override {
        const LedgerAction action = recognize_ledger_statement(statement).action;
        if (action == LedgerAction::update || action == LedgerAction::insert) {
            writes_ += Text(statement) + u"\n";
            return {};
        }
        if (action == LedgerAction::look_up && has_ledger_row_) return {{u"WID"}, {{u"7"}}, true};
        ResultTable result{{}, {}, true};
        std::vector<Variant> row;
        for (const BillTable* const table : bill_tables()) {
            if (!reads_from(statement, *table)) continue;
            for (const BillColumn& column : table->columns) {
                const bool is_unwritable = table_ == table->name && column_ == column.column;
                result.columns.emplace_back(column.column);
                row.push_back(is_unwritable ? Variant(Other{u"7"}) : plain_seven(column.type));
            }
        }
        if (!row.empty()) result.rows.push_back(std::move(row));
        return result;
    }
    void begin() override {}
    void commit() override {}
    void roll_back() override {}
    [[nodiscard]] Remedy remedy() const override { return Remedy::none; }
    [[nodiscard]] const Dialect& dialect() const override { return dialect_named("unknown"); }
    [[nodiscard]] std::string engine() const override { return "sevens"; }

    /// The statements that have changed the ledger.
    [[nodiscard]] const Text& writes() const { return writes_; }

private:
    ~SevensDatabase() override = default;

    bool has_ledger_row_;
    TextView table_;
    TextView column_;
    Text writes_;
};

/// What a member writes to the ledger for a stored bill; nothing if it fails.
Text writes_of(const Member& member, bool has_ledger_row, TextView table = {}, TextView column = {}) {
    const Owned<SevensDatabase> database(new SevensDatabase(has_ledger_row, table, column));
    Inventory_Class component;
    component.set_ADOConn(database.get());
    const Argument bill_id{Text(u"7")};
    const std::int32_t result = component.call(member, std::span(&bill_id, 1));
    component.set_ADOConn(nullptr);
    return result == 0 ? database->writes() : Text();
}

bool writes_unconverted(const Member& member, TextView table, TextView column) {
    return std::ranges::any_of(std::array{false, true}, [&](bool has_ledger_row) {
        const Text plain = writes_of(member, has_ledger_row);
        if (plain.empty()) throw std::logic_error(to_utf8(member.name) + " does not post a bill of sevens");
        const Text unwritable = writes_of(member, has_ledger_row, table, column);
        return !unwritable.empty() && unwritable != plain;
    });
}

std::vector<const Member*> members_of_stored_bills() {
    std::vector<const Member*> members;
    for (const Member& member : member_table()) {
        if (member.posting != nullptr && member.parameters().front().type == ParameterType::text)
            members.push_back(&member);
    }
    return members;
}

std::vector<ColumnName> find_unconverted_columns() {
    const std::vector<const Member*> members = members_of_stored_bills();
    std::vector<ColumnName> found;
    for (const BillTable* const table : bill_tables()) {
        for (const BillColumn& column : table->columns) {
            const auto writes = [&](const Member* member) {
                return writes_unconverted(*member, table->name, column.column);
            };
            if (std::ranges::any_of(members, writes)) found.push_back({table->name, column.column});
        }
    }
    return found;
}

}  // namespace

std::span<const ColumnName> unconverted_columns() {
    static const std::vector<ColumnName> found = find_unconverted_columns();
    return found;
}

}  // namespace vantlo
