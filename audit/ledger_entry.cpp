#include "audit/ledger_entry.h"

#include <algorithm>

#include "automation/error.h"
#include "automation/number_text.h"

namespace vantlo {

namespace {

std::optional<std::int64_t> quantity_of(const Variant& value) {
    if (value.is<Null>()) return std::nullopt;
    try {
        return to_currency(value).ten_thousandths();
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace

Amounts operator+(const Amounts& left, const Amounts& right) {
    return {left[0] + right[0], left[1] + right[1], left[2] + right[2]};
}

Amounts operator-(const Amounts& left, const Amounts& right) {
    return {left[0] - right[0], left[1] - right[1], left[2] - right[2]};
}

Amounts LedgerEntry::amounts() const {
    return {quantities[0].value_or(0), quantities[1].value_or(0), quantities[2].value_or(0)};
}

bool LedgerEntry::has_null() const {
    return std::ranges::any_of(quantities, [](const auto& quantity) { return !quantity.has_value(); });
}

LedgerEntry read_entry(Recordset& rows) {
    LedgerEntry entry;
    for (std::size_t i = 0; i < key_columns.size(); ++i) {
        const Variant value = rows.field(key_columns[i]);
        if (!value.is<Null>()) entry.key.parts[i] = to_text(value);
    }
    for (std::size_t i = 0; i < quantity_columns.size(); ++i) {
        entry.quantities[i] = quantity_of(rows.field(quantity_columns[i]));
    }
    for (std::size_t i = 0; i < detail_columns.size(); ++i) entry.details[i] = rows.field(detail_columns[i]);
    return entry;
}

std::vector<LedgerEntry> read_entries(NativeConnection& database) {
    std::vector<LedgerEntry> entries;
    const RecordsetVariable rows = database.execute(u"select * from Inventory");
    for (; !rows->eof(); rows->move_next()) entries.push_back(read_entry(*rows));
    std::ranges::stable_sort(entries, {}, &LedgerEntry::key);
    return entries;
}

Text condition_of(const LedgerKey& key) {
    Text condition;
    for (std::size_t i = 0; i < key_columns.size(); ++i) {
        if (i > 0) condition += u" and ";
        condition += key_columns[i];
        const std::optional<Text>& part = key.parts[i];
        if (!part) {
            condition += u" is null";
        } else {
            const bool is_number = i == status_part && long_from_text(*part).has_value();
            condition += u"=" + (is_number ? *part : exact_literal(*part));
        }
    }
    return condition;
}

Text exact_literal(TextView text) { return u"'" + replace_all(text, u'\'', u"''") + u"'"; }

}  // namespace vantlo
