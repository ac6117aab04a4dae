#include "audit/repair.h"

#include <algorithm>

#include "automation/calendar.h"
#include "automation/number_text.h"

namespace vantlo {

namespace {

Text literal_of(std::optional<std::int64_t> quantity) {
    return quantity ? number_text(Currency::from_ten_thousandths(*quantity)) : Text(u"null");
}

Text literal_of(const Variant& detail) { return detail.is<Null>() ? Text(u"null") : exact_literal(to_text(detail)); }

Text literal_of(const LedgerKey& key, std::size_t part) {
    const std::optional<Text>& text = key.parts[part];
    if (!text) return u"null";
    return part == status_part && long_from_text(*text) ? *text : exact_literal(*text);
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

Repair repair_of(Cause cause, const Difference& rows) {
    Repair repair{cause, rows.key, rows.stored, rows.expected, {}, {}};
    if (rows.stored.size() == 1 && rows.expected.size() == 1) {
        repair.after.front().details = rows.stored.front().details;
        repair.statements.push_back(update_of(repair.after.front()));
        return repair;
    }
    if (!rows.stored.empty()) repair.removal = u"delete from Inventory where " + condition_of(rows.key);
    for (const LedgerEntry& entry : repair.after) repair.statements.push_back(insertion_of(entry));
    return repair;
}

/// One line of the journal: a row as it was and as it is, either of which can be missing.
Text journal_entry(const Repair& repair, const std::string& cause, const LedgerEntry* before,
                   const LedgerEntry* after) {
    Text columns = u"Cause,Action";
    const TextView action = before == nullptr ? u"insert" : after == nullptr ? u"delete" : u"update";
    Text values = exact_literal(from_utf8(cause)) + u"," + exact_literal(action);
    for (std::size_t i = 0; i < key_columns.size(); ++i) {
        add(columns, key_columns[i]);
        add(values, literal_of(repair.key, i));
    }
    for (std::size_t i = 0; i < quantity_columns.size(); ++i) {
        add(columns, Text(u"Before") + quantity_columns[i]);
        add(values, before == nullptr ? Text(u"null") : literal_of(before->quantities[i]));
        add(columns, Text(u"After") + quantity_columns[i]);
        add(values, after == nullptr ? Text(u"null") : literal_of(after->quantities[i]));
    }
    return u"insert into RepairJournal(" + columns + u") values(" + values + u")";
}

}  // namespace

std::vector<Repair> repairs_of(const std::vector<Finding>& findings) {
    std::vector<Repair> repairs;
    for (const Finding& finding : findings) {
        for (const Difference& rows : finding.differences) repairs.push_back(repair_of(finding.cause, rows));
    }
    return repairs;
}

void run_repairs(const std::vector<Repair>& repairs, NativeConnection& database, const NameOfCause& name_of_cause) {
    for (const Repair& repair : repairs) {
        if (!repair.removal.empty()) database.run(repair.removal);
    }
    for (const Repair& repair : repairs) {
        for (const Text& statement : repair.statements) database.run(statement);
        for (std::size_t i = 0; i < std::max(repair.before.size(), repair.after.size()); ++i) {
            database.run(journal_entry(repair, name_of_cause(repair.cause),
                                       i < repair.before.size() ? &repair.before[i] : nullptr,
                                       i < repair.after.size() ? &repair.after[i] : nullptr));
        }
    }
}

}  // namespace vantlo
