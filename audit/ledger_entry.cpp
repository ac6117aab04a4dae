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

/// The parts of a key that are there, for people.
Text known_parts(const LedgerKey& key) {
    Text parts;
    for (std::size_t i = 0; i < key_columns.size(); ++i) {
        if (key.parts[i]) parts += (parts.empty() ? u"" : u" ") + Text(key_columns[i]) + u"=" + *key.parts[i];
    }
    return parts;
}

}  // namespace

Amounts operator+(const Amounts& left, const Amounts& right) {
    return {left[0] + right[0], left[1] + right[1], left[2] + right[2]};
}

Amounts operator-(const Amounts& left, const Amounts& right) {
    return {left[0] - right[0], left[1] - right[1], left[2] - right[2]};
}

void add_to(AmountsByKey& amounts, const LedgerKey& key, const Amounts& added) {
    Amounts& sum = amounts[key];
    sum = sum + added;
}

Amounts LedgerEntry::amounts() const {
    return {quantities[0].value_or(0), quantities[1].value_or(0), quantities[2].value_or(0)};
}

bool LedgerEntry::has_null() const {
    return std::ranges::any_of(quantities, [](const auto& quantity) { return !quantity.has_value(); });
}

bool LedgerEntry::has_no_key() const {
    return std::ranges::any_of(broken, [&](const BrokenValue& value) {
        return std::ranges::count(key_columns, value.column) > 0 && !text_or_nothing(value.value);
    });
}

LedgerKey read_key(Recordset& rows, std::vector<BrokenValue>& broken) {
    LedgerKey key;
    for (std::size_t i = 0; i < key_columns.size(); ++i) {
        const Variant value = rows.field(key_columns[i]);
        if (value.is<Null>()) continue;
        key.parts[i] = text_or_nothing(value);
        const ColumnType type = i == status_part ? ColumnType::whole_number : ColumnType::text;
        if (!is_of_type(value, type)) broken.push_back({u"Inventory", u"", key_columns[i], value});
    }
    return key;
}

LedgerEntry read_entry(Recordset& rows) {
    LedgerEntry entry;
    entry.key = read_key(rows, entry.broken);
    for (std::size_t i = 0; i < quantity_columns.size(); ++i) {
        const Variant value = rows.field(quantity_columns[i]);
        entry.quantities[i] = quantity_of(value);
        if (!entry.quantities[i] && !value.is<Null>())
            entry.broken.push_back({u"Inventory", u"", quantity_columns[i], value});
    }
    for (std::size_t i = 0; i < detail_columns.size(); ++i) entry.details[i] = rows.field(detail_columns[i]);
    for (BrokenValue& value : entry.broken)
        value.row = entry.has_no_key() ? known_parts(entry.key) : condition_of(entry.key);
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
            const bool is_number = i == status_part && is_whole_number(*part);
            condition += u"=" + (is_number ? *part : exact_literal(*part));
        }
    }
    return condition;
}

bool is_whole_number(TextView text) {
    const TextView digits = text.starts_with(u'-') ? text.substr(1) : text;
    return !digits.empty() && digits.find_first_not_of(u"0123456789") == TextView::npos;
}

Text exact_literal(TextView text) { return u"'" + replace_all(text, u'\'', u"''") + u"'"; }

}  // namespace vantlo
