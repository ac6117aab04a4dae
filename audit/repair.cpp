#include "audit/repair.h"

#include <algorithm>

#include "automation/calendar.h"
#include "automation/number_text.h"
#include "bookkeeping/posting_note.h"

namespace vantlo {

namespace {

constexpr TextView remarks_column = u"Remarks";

Text literal_of(std::optional<std::int64_t> quantity) {
    return quantity ? number_text(Currency::from_ten_thousandths(*quantity)) : Text(u"null");
}

Text literal_of(const Variant& detail) { return detail.is<Null>() ? Text(u"null") : exact_literal(to_text(detail)); }

Text literal_of(const LedgerKey& key, std::size_t part) {
    const std::optional<Text>& text = key.parts[part];
    if (!text) return u"null";
    return part == status_part && is_whole_number(*text) ? *text : exact_literal(*text);
}

void add(Text& list, const Text& item) { list += list.empty() ? item : u"," + item; }

Text insertion_of(const LedgerEntry& entry) {
    Text columns;
    Text values;
    for (std::size_t i = 0; i < key_columns.size(); ++i) {
        add(columns, key_columns[i]);
        add(values, literal_of(entry.key, i));
    }
    for (std::size_t i = 0; i < detail_columns.size(); ++i) {
        add(columns, detail_columns[i]);
        add(values, literal_of(entry.details[i]));
    }
    for (std::size_t i = 0; i < quantity_columns.size(); ++i) {
        add(columns, quantity_columns[i]);
        add(values, literal_of(entry.quantities[i]));
    }
    return u"insert into Inventory(" + columns + u") values(" + values + u")";
}

Text update_of(const LedgerEntry& entry) {
    Text assignments;
    for (std::size_t i = 0; i < quantity_columns.size(); ++i) {
        add(assignments, Text(quantity_columns[i]) + u"=" + literal_of(entry.quantities[i]));
    }
    return u"update Inventory set " + assignments + u" where " + condition_of(entry.key);
}

/// Gives the rows what the stored ones have beside key and quantities: class, unit and remarks. Rows that are merged keep
/// the remarks of each.
void keep_details(std::vector<LedgerEntry>& after, const std::vector<LedgerEntry>& stored) {
    for (std::size_t row = 0; row < stored.size() && !after.empty(); ++row) {
        LedgerEntry& kept = after[std::min(row, after.size() - 1)];
        if (row < after.size()) {
            kept.details = stored[row].details;
            continue;
        }
        for (std::size_t i = 0; i < detail_columns.size(); ++i) {
            Variant& detail = kept.details[i];
            const Variant& other = stored[row].details[i];
            if (detail.is<Null>()) detail = other;
            if (detail_columns[i] != remarks_column || other.is<Null>() || to_text(other).empty()) continue;
            const Text remarks = to_text(detail);
            if (remarks.empty()) detail = other;
            if (remarks.find(to_text(other)) == Text::npos) detail = remarks + u"; " + to_text(other);
        }
    }
}

Repair repair_of(Cause cause, const Difference& rows) {
    Repair repair{cause, rows.key, rows.stored, rows.expected, {}, {}};
    keep_details(repair.after, rows.stored);
    if (rows.stored.size() == 1 && rows.expected.size() == 1) {
        repair.statements.push_back(update_of(repair.after.front()));
        return repair;
    }
    if (!rows.stored.empty()) repair.removal = u"delete from Inventory where " + condition_of(rows.key);
    for (const LedgerEntry& entry : repair.after) repair.statements.push_back(insertion_of(entry));
    return repair;
}

}  // namespace

std::vector<Repair> repairs_of(const std::vector<Finding>& findings) {
    std::vector<Repair> repairs;
    for (const Finding& finding : findings) {
        for (const Difference& rows : finding.differences) repairs.push_back(repair_of(finding.cause, rows));
    }
    return repairs;
}

Text program_of_repair(std::int64_t number) { return Text(repair_program) + from_utf8(std::to_string(number)); }

RepairOutcome run_repairs(const std::vector<Repair>& repairs, NativeConnection& database,
                          const NameOfCause& name_of_cause) {
    const RowImages images(database);
    RepairOutcome outcome{next_repair_number(database), {}};
    std::vector<std::vector<RowImage>> before;
    for (const Repair& repair : repairs) before.push_back(images.of(condition_of(repair.key)));
    PostingNote note;
    note.begin(database);
    note.begin_program(program_of_repair(outcome.number));
    for (const Repair& repair : repairs) {
        if (!repair.removal.empty()) database.run(repair.removal);
    }
    for (const Repair& repair : repairs) {
        for (const Text& statement : repair.statements) database.run(statement);
    }
    note.end_program();
    for (std::size_t i = 0; i < repairs.size(); ++i) {
        const Repair& repair = repairs[i];
        const std::vector<RowImage> after = images.of(condition_of(repair.key));
        if (before[i].size() != repair.before.size() || after.size() != repair.after.size()) {
            outcome.spoilt.push_back(repair.key);
        }
        enter_repair(database, outcome.number, {from_utf8(name_of_cause(repair.cause)), before[i], after});
    }
    return outcome;
}

}  // namespace vantlo
