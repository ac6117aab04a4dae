#include "bookkeeping/incoming_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "automation/error.h"
#include "automation/number_text.h"
#include "automation/text_value.h"
#include "bills/field_use.h"
#include "bookkeeping/rows_named.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

using Names = std::set<Text>;
using GoodsAndUnit = std::pair<Text, Text>;

Text trimmed(const Variant& value) { return Text(trim_blanks(text_or_empty(value))); }

Text trimmed(const Record& record, TextView column) {
    const Variant* const value = record.find(column);
    return value == nullptr ? Text() : trimmed(*value);
}

/// The rows of a table whose key's first column is among the names.
std::vector<std::vector<Variant>> rows_named(NativeConnection& database, const MasterTable& table, const Names& names) {
    return rows_named(database, table.name, column_list(table.columns), table.columns.front().column,
                      std::vector<Text>(names.begin(), names.end()));
}

bool has_rows(NativeConnection& database, const MasterTable& table) {
    const RecordsetVariable rows = database.execute(Text(u"select count(*) as n from ") + table.name);
    return to_double(rows->field(u"n")) > 0;
}

/// Runs what reads a table; nothing if a host's database has no such table or columns.
template <typename Read>
void if_there(const Read& read) {
    try {
        read();
    } catch (const Failure& failure) {
        if (failure.number() != error::no_such_table && failure.number() != error::no_such_column) throw;
    }
}

/// All that bills name.
struct Named {
    Names goods;
    Names warehouses;
    std::set<GoodsAndUnit> units;  ///< of quantities that are converted
};

Named names_in(std::span<const Bill* const> bills) {
    Named named;
    for (const Bill* const bill : bills) {
        const FieldUse& use = field_use_of(*bill->kind);
        const auto look_at = [&](const Record& record, BillPart part) {
            for (const BillColumn& column : columns_of(*bill->kind, part)) {
                if (column.type != ColumnType::text) continue;
                Text value = trimmed(record, column.column);
                if (value.empty()) continue;
                if (use.is_warehouse(part, column.field)) named.warehouses.insert(value);
                if (column.field == "goods") named.goods.insert(value);
                if (column.field == "unit" && part == BillPart::line && use.converts_quantities)
                    named.units.emplace(trimmed(record, u"Gid"), std::move(value));
            }
        };
        look_at(bill->header, BillPart::header);
        for (const Record& line : bill->lines) look_at(line, BillPart::line);
    }
    return named;
}

/// What the master tables and the files know of them.
struct Known {
    Names goods;
    Names warehouses;
    std::set<GoodsAndUnit> base_units;
    std::map<GoodsAndUnit, Variant> factors;

    void add(const MasterTable& table, const std::vector<Variant>& row) {
        if (table.field == "warehouses") warehouses.insert(trimmed(row[0]));
        if (table.field == "units") factors[{trimmed(row[0]), trimmed(row[1])}] = row[2];
        if (table.field != "goods") return;
        goods.insert(trimmed(row[0]));
        const auto unit = std::ranges::find(table.columns, "unit", &BillColumn::field) - table.columns.begin();
        base_units.emplace(trimmed(row[0]), trimmed(row[static_cast<std::size_t>(unit)]));
    }
};

/// A conversion that fails is the posting's to tell.
std::optional<Currency> currency_of(const Variant& value) {
    try {
        return to_currency(value);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

std::string shown(const GoodsAndUnit& unit) { return to_utf8(unit.first + u" " + unit.second); }

void find_zero_quantities(std::span<const Bill* const> bills, const Known& known, std::vector<std::string>& found) {
    for (const Bill* const bill : bills) {
        const bool is_converted = field_use_of(*bill->kind).converts_quantities;
        const auto columns = columns_of(*bill->kind, BillPart::line);
        const TextView quantity = std::ranges::find(columns, "quantity", &BillColumn::field)->column;
        for (std::size_t i = 0; i < bill->lines.size(); ++i) {
            const Record& line = bill->lines[i];
            const Variant* const value = line.find(quantity);
            if (value == nullptr || value->is<Null>() || to_double(*value) == 0) continue;
            std::optional<Currency> base = currency_of(*value);
            const auto factor = known.factors.find({trimmed(line, u"Gid"), trimmed(line, u"Unit")});
            if (base && is_converted && factor != known.factors.end() && !factor->second.is<Null>()) {
                const std::optional<Currency> times = currency_of(factor->second);
                if (times && *times != Currency()) base = currency_of(base->to_double() * times->to_double());
            }
            if (base == Currency())
                found.push_back(fmt::format("{} {} {}", bill->kind->name, to_utf8(bill->id), i + 1));
        }
    }
}

}  // namespace

DoubtfulNames doubtful_names(NativeConnection& database, std::span<const MasterRow> master,
                             std::span<const Bill* const> bills) {
    const Named named = names_in(bills);
    DoubtfulNames doubtful;
    Known known;
    for (const MasterTable& table : master_tables()) {
        if (table.field == "minimums") continue;  // no bill names one, and not every account may read them
        const bool is_of_warehouses = table.field == "warehouses";
        if_there([&] {
            for (const auto& row : rows_named(database, table, is_of_warehouses ? named.warehouses : named.goods))
                known.add(table, row);
            if (is_of_warehouses) doubtful.keeps_warehouses = has_rows(database, table);
            if (table.field == "goods") doubtful.keeps_goods = has_rows(database, table);
        });
    }
    for (const MasterRow& row : master) {
        std::vector<Variant> values;
        for (const BillColumn& column : row.table->columns) values.push_back(row.values.value(column.column));
        if (row.table->field == "units" && !row.knows(u"UnitConverter")) {
            const auto stored = known.factors.find({trimmed(values[0]), trimmed(values[1])});
            if (stored != known.factors.end()) continue;
        }
        known.add(*row.table, values);
        if (row.table->field == "warehouses") doubtful.keeps_warehouses = true;
        if (row.table->field == "goods") doubtful.keeps_goods = true;
    }
    for (const Text& goods : named.goods) {
        if (!known.goods.contains(goods)) doubtful.goods.push_back(to_utf8(goods));
    }
    for (const Text& warehouse : named.warehouses) {
        if (!known.warehouses.contains(warehouse)) doubtful.warehouses.push_back(to_utf8(warehouse));
    }
    for (const GoodsAndUnit& unit : named.units) {
        const auto factor = known.factors.find(unit);
        if (factor == known.factors.end()) {
            if (!known.base_units.contains(unit)) doubtful.units.push_back(shown(unit));
            continue;
        }
        if (factor->second.is<Null>()) continue;
        const std::optional<Currency> value = currency_of(factor->second);
        if (value && *value <= Currency())
            doubtful.factors.push_back(shown(unit) + " " + to_utf8(to_text(factor->second)));
    }
    find_zero_quantities(bills, known, doubtful.zero_quantities);
    return doubtful;
}

namespace {

/// How many stored lines of all kinds are in a unit of goods.
std::int64_t lines_in_unit(NativeConnection& database, const Record& unit) {
    std::int64_t lines = 0;
    std::set<const BillTable*> counted;
    for (const BillKind& kind : bill_kinds()) {
        if (!field_use_of(kind).converts_quantities || !counted.insert(kind.lines).second) continue;
        const RecordsetVariable rows =
            database.execute(Text(u"select count(*) as n from ") + kind.lines->name + u" where Gid=" +
                             GetSqlVal(unit.value(u"id")) + u" and Unit=" + GetSqlVal(unit.value(u"Unit")));
        lines += static_cast<std::int64_t>(to_double(rows->field(u"n")));
    }
    return lines;
}

Text key_of(const MasterTable& table, const std::vector<Variant>& row) {
    Text key;
    for (std::size_t i = 0; i < table.keys; ++i) key += trimmed(row[i]) + u"\n";
    return key;
}

/// A number as the shortest text of a Single, so that 12.1 in a double column is what a file's 12.1 is.
Text comparable(const Variant& value, ColumnType type) {
    if (value.is<Null>() || type != ColumnType::single) return trimmed(value);
    return number_text(static_cast<float>(to_double(value)));
}

}  // namespace

std::vector<MasterChange> master_changes(NativeConnection& database, std::span<const MasterRow> master) {
    std::vector<MasterChange> changes;
    for (const MasterTable& table : master_tables()) {
        Names names;
        for (const MasterRow& row : master) {
            if (row.table == &table) names.insert(trimmed(row.values, table.columns.front().column));
        }
        std::map<Text, std::vector<Variant>> stored;
        for (std::vector<Variant>& row : rows_named(database, table, names)) stored.emplace(key_of(table, row), row);
        for (const MasterRow& row : master) {
            if (row.table != &table) continue;
            std::vector<Variant> values;
            for (const BillColumn& column : table.columns) values.push_back(row.values.value(column.column));
            const auto before = stored.find(key_of(table, values));
            if (before == stored.end()) continue;
            for (std::size_t i = table.keys; i < table.columns.size(); ++i) {
                const BillColumn& column = table.columns[i];
                if (!row.knows(column.column)) continue;
                const Text was = comparable(before->second[i], column.type);
                const Text will_be = comparable(values[i], column.type);
                if (was == will_be) continue;
                const bool is_factor = column.field == "factor";
                changes.push_back(
                    {&row, column.field, was, will_be, is_factor ? lines_in_unit(database, row.values) : 0});
            }
        }
    }
    return changes;
}

}  // namespace vantlo
