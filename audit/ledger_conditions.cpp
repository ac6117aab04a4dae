#include "audit/ledger_conditions.h"

#include <algorithm>
#include <iterator>

#include "audit/ledger_entry.h"
#include "audit/ledger_table.h"
#include "bookkeeping/find_table.h"
#include "bookkeeping/own_tables.h"

namespace vantlo {

namespace {

/// What a key column takes for equal to `A`.
struct EqualTexts {
    Condition condition;
    const char16_t* like;
};
constexpr EqualTexts equal_texts[] = {
    {Condition::key_ignores_case, u"a"},
    {Condition::key_ignores_width, u"Ａ"},
    {Condition::key_ignores_blanks, u"A "},
};

/// Whether the database takes `A` and another text for equal in a column. A union keeps one of them then; comparisons with
/// literals would not tell, as an engine may compare those by the rules of the session.
bool takes_for_equal(NativeConnection& database, TextView column, TextView like) {
    const RecordsetVariable rows =
        database.execute(u"select count(*) as n from (select " + Text(column) +
                         u" as c from Inventory where 1=0 union select 'A' union select '" + Text(like) + u"') x");
    return to_long(rows->field(u"n")) == 1;
}

bool has_key_index(const LedgerTable& table) {
    return std::ranges::any_of(table.indexes, [](const std::string& columns) {
        return (columns + ",").starts_with("wid,gid,") || (columns + ",").starts_with("gid,wid,");
    });
}

}  // namespace

std::vector<LedgerCondition> ledger_conditions(NativeConnection& database) {
    std::vector<LedgerCondition> conditions;
    const auto note = [&](Condition condition, std::string subject = {}) {
        conditions.push_back({condition, std::move(subject)});
    };
    const LedgerTable table = read_ledger_table(database);
    if (!table.is_described) return conditions;
    if (!find_table(database, "Inventory")) {
        note(Condition::no_ledger);
        return conditions;
    }
    const auto look_for = [&](const auto& names) {
        for (const char16_t* const name : names) {
            if (table.column(to_utf8(name)) == nullptr) note(Condition::column_missing, to_utf8(name));
        }
    };
    look_for(key_columns);
    look_for(detail_columns);
    look_for(quantity_columns);
    for (const MissingColumn& missing : missing_own_columns(database)) {
        note(Condition::older_table, missing.table + "." + missing.column);
    }
    if (table.is_view) note(Condition::ledger_is_view);
    for (const TableWithoutRollback& other : tables_without_rollback(database)) {
        note(Condition::no_rollback, other.table + " (" + other.engine + ")");
    }
    for (const auto& [condition, like] : equal_texts) {
        // SQL Server always takes them for equal, whatever the collation.
        if (condition == Condition::key_ignores_blanks && database.dialect().name == "sqlserver") continue;
        std::string columns;
        for (std::size_t part = 0; part < status_part; ++part) {
            const std::string name = to_utf8(key_columns[part]);
            if (table.column(name) == nullptr || !takes_for_equal(database, key_columns[part], like)) continue;
            columns += columns.empty() ? name : ", " + name;
        }
        if (!columns.empty()) note(condition, columns);
    }
    if (!table.is_view && !has_key_index(table)) note(Condition::no_key_index);
    for (const std::string& trigger : table.triggers) note(Condition::other_trigger, trigger);
    return conditions;
}

bool refuses_repair(Condition condition) {
    constexpr Condition refused[] = {Condition::no_ledger, Condition::column_missing, Condition::older_table,
                                     Condition::no_rollback};
    return std::ranges::find(refused, condition) != std::end(refused);
}

bool refuses_adoption(Condition condition) {
    constexpr Condition refused[] = {Condition::no_ledger, Condition::column_missing, Condition::ledger_is_view,
                                     Condition::no_rollback};
    return std::ranges::find(refused, condition) != std::end(refused);
}

}  // namespace vantlo
