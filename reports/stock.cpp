#include "reports/stock.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "automation/error.h"
#include "bookkeeping/journal.h"
#include "dataaccess/sql_literals.h"
#include "reports/movements.h"
#include "reports/names.h"

namespace vantlo {

namespace {

/// A value as a text, `?` for one that has none, such as binary data.
Text text_of(const Variant& value) {
    if (value.is<Null>()) return {};
    try {
        return to_text(value);
    } catch (const Failure&) {
        return u"?";
    }
}

Variant quantity_of(const Variant& value) {
    if (value.is<Null>()) return Null{};
    try {
        return to_currency(value);
    } catch (const Failure&) {
        return text_of(value);
    }
}

std::int64_t ten_thousandths(const Variant& quantity) {
    const Currency* const number = quantity.get_if<Currency>();
    return number == nullptr ? 0 : number->ten_thousandths();
}

/// The goods of the rows, as their master table has them.
struct GoodsFacts {
    Text name, goods_class, unit;
};

class Names {
public:
    explicit Names(NativeConnection& database) : warehouses_(read_names(database, u"Warehouse")) {
        const RecordsetVariable rows = database.execute(u"select ID,Name,Class,Unit from Goods");
        for (; !rows->eof(); rows->move_next()) {
            goods_[text_of(rows->field(u"ID"))] = {text_of(rows->field(u"Name")), text_of(rows->field(u"Class")),
                                                   text_of(rows->field(u"Unit"))};
        }
    }

    void complete(StockRow& row) const {
        if (const auto found = warehouses_.find(row.warehouse); found != warehouses_.end())
            row.warehouse_name = found->second;
        const auto goods = goods_.find(row.goods);
        if (goods == goods_.end()) return;
        row.goods_name = goods->second.name;
        row.base_unit = goods->second.unit;
    }

    [[nodiscard]] const GoodsFacts* goods(const Text& id) const {
        const auto found = goods_.find(id);
        return found == goods_.end() ? nullptr : &found->second;
    }

private:
    std::map<Text, Text> warehouses_;
    std::map<Text, GoodsFacts> goods_;
};

/// The condition on the key of a row of the ledger or the journal.
Text key_condition(const StockWanted& wanted) {
    Text condition = and_matches(u"WID", wanted.warehouses) + and_matches(u"GId", wanted.goods) +
                     and_matches(u"Model1", wanted.models1) + and_matches(u"Model2", wanted.models2);
    if (wanted.statuses.empty()) return condition;
    Text statuses;
    for (const std::int32_t status : wanted.statuses) statuses += (statuses.empty() ? u"" : u",") + GetSqlVal(status);
    return condition + u" and Status in (" + statuses + u")";
}

auto key_of(const StockRow& row) { return std::tie(row.warehouse, row.goods, row.model1, row.model2, row.status); }

bool is_wanted(const StockRow& row, const StockWanted& wanted) {
    if (!wanted.negative && !wanted.nonzero) return true;
    const std::int64_t on_hand = ten_thousandths(row.on_hand);
    return wanted.negative ? on_hand < 0 : on_hand != 0 || row.on_hand.is<Text>();
}

/// The key that a recordset of the ledger or the journal stands on.
StockRow row_with_key(Recordset& rows) {
    StockRow row;
    row.warehouse = text_of(rows.field(u"WID"));
    row.goods = text_of(rows.field(u"GId"));
    row.model1 = text_of(rows.field(u"Model1"));
    row.model2 = text_of(rows.field(u"Model2"));
    row.status = text_of(rows.field(u"Status"));
    return row;
}

std::vector<StockRow> read_rows(NativeConnection& database, const Text& condition) {
    std::vector<StockRow> stock;
    const RecordsetVariable rows = database.execute(
        u"select WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty from Inventory "
        u"where 1=1" +
        condition);
    for (; !rows->eof(); rows->move_next()) {
        StockRow& row = stock.emplace_back(row_with_key(*rows));
        row.goods_class = text_of(rows->field(u"Class"));
        row.unit = text_of(rows->field(u"Unit"));
        row.received = quantity_of(rows->field(u"InQty"));
        row.issued = quantity_of(rows->field(u"OutQty"));
        row.on_hand = quantity_of(rows->field(u"CurrentQty"));
    }
    return stock;
}

/// Completes the rows, and leaves out and sorts as wanted.
std::vector<StockRow> finished(std::vector<StockRow> rows, const StockWanted& wanted, const Names& names) {
    std::erase_if(rows, [&](const StockRow& row) { return !is_wanted(row, wanted); });
    for (StockRow& row : rows) names.complete(row);
    std::ranges::stable_sort(rows,
                             [](const StockRow& left, const StockRow& right) { return key_of(left) < key_of(right); });
    return rows;
}

/// Sums of a key's quantities, in ten-thousandths, and what else its rows tell.
struct KeySums {
    std::int64_t received = 0, issued = 0, on_hand = 0;
    Text goods_class, unit;
};

using StockKey = std::tuple<Text, Text, Text, Text, Text>;

class PastReader {
public:
    PastReader(NativeConnection& database, const StockWanted& wanted)
        : database_(database), condition_(key_condition(wanted)) {}

    /// Adds up the rows that there are now, or only what they tell besides their quantities.
    void read_ledger(bool with_quantities) {
        for (const StockRow& row : read_rows(database_, condition_)) {
            KeySums& sums = sums_[key_of(row)];
            if (sums.goods_class.empty()) sums.goods_class = row.goods_class;
            if (sums.unit.empty()) sums.unit = row.unit;
            if (!with_quantities) continue;
            sums.received += ten_thousandths(row.received);
            sums.issued += ten_thousandths(row.issued);
            sums.on_hand += ten_thousandths(row.on_hand);
        }
    }

    /// Adds the movements of a range `sign` times.
    void add_movements(const MovementRange& range, int sign) {
        const auto sum = [&](TextView column) {
            return replace_all(database_.dialect().exact_sum, u'?', column) + u" as " + Text(column);
        };
        const RecordsetVariable rows =
            database_.execute(u"select WID,GId,Model1,Model2,Status," + sum(u"InChange") + u"," + sum(u"OutChange") +
                              u"," + sum(u"CurrentChange") + u" from StockMovement where 1=1" + and_numbered(range) +
                              condition_ + u" group by GId,WID,Model1,Model2,Status");
        for (; !rows->eof(); rows->move_next()) {
            KeySums& sums = sums_[key_of(row_with_key(*rows))];
            const auto change = [&](TextView column) {
                return sign * ten_thousandths(quantity_of(rows->field(column)));
            };
            sums.received += change(u"InChange");
            sums.issued += change(u"OutChange");
            sums.on_hand += change(u"CurrentChange");
        }
    }

    [[nodiscard]] std::vector<StockRow> rows(const Names& names) const {
        std::vector<StockRow> rows;
        for (const auto& [key, sums] : sums_) {
            if (sums.received == 0 && sums.issued == 0 && sums.on_hand == 0) continue;
            StockRow& row = rows.emplace_back();
            std::tie(row.warehouse, row.goods, row.model1, row.model2, row.status) = key;
            const GoodsFacts* const goods = names.goods(row.goods);
            row.goods_class = sums.goods_class.empty() && goods != nullptr ? goods->goods_class : sums.goods_class;
            row.unit = sums.unit.empty() && goods != nullptr ? goods->unit : sums.unit;
            row.received = Currency::from_ten_thousandths(sums.received);
            row.issued = Currency::from_ten_thousandths(sums.issued);
            row.on_hand = Currency::from_ten_thousandths(sums.on_hand);
        }
        return rows;
    }

private:
    NativeConnection& database_;
    Text condition_;
    std::map<StockKey, KeySums> sums_;
};

/// A group that rows may be in, and the name beside it if it has one.
struct GroupColumn {
    StockGroup group;
    std::string_view column;
    Text StockRow::*value;
    std::string_view name_column;
    Text StockRow::*name;
};

// clang-format off
constexpr GroupColumn group_columns[] = {
    {StockGroup::warehouse,   "warehouse", &StockRow::warehouse,   "warehouse_name", &StockRow::warehouse_name},
    {StockGroup::goods,       "goods",     &StockRow::goods,       "goods_name",     &StockRow::goods_name},
    {StockGroup::goods_class, "class",     &StockRow::goods_class, "",               nullptr},
    {StockGroup::model1,      "model1",    &StockRow::model1,      "",               nullptr},
    {StockGroup::model2,      "model2",    &StockRow::model2,      "",               nullptr},
    {StockGroup::status,      "status",    &StockRow::status,      "",               nullptr},
};
// clang-format on

}  // namespace

std::vector<StockRow> read_stock(NativeConnection& database, const StockWanted& wanted) {
    // What the conditions leave out beforehand need not be read; whether a rest of a fraction is 0 is decided exactly.
    Text condition = key_condition(wanted) + and_matches(u"Class", wanted.classes);
    if (wanted.negative) condition += u" and CurrentQty<0";
    if (wanted.nonzero) condition += u" and CurrentQty<>0";
    return finished(read_rows(database, condition), wanted, Names(database));
}

std::vector<StockRow> read_stock_before(NativeConnection& database, const StockWanted& wanted, std::int64_t movement) {
    const MovementNumbers numbers = movement_numbers(database);
    const bool is_past_all = movement > numbers.last;
    const bool is_early = !is_past_all && movement - numbers.first < numbers.last - movement;
    const bool is_on = journal_state(database) == JournalState::on;
    const bool sums_from_begin = is_early || !is_on;  // what changes while it is off is in the ledger alone
    PastReader reader(database, wanted);
    reader.read_ledger(!sums_from_begin);
    if (sums_from_begin) {
        reader.add_movements({0, movement}, 1);
    } else if (!is_past_all) {
        reader.add_movements({movement, all_movements.until}, -1);
    }
    const Names names(database);
    std::vector<StockRow> rows = reader.rows(names);
    if (!wanted.classes.empty()) {
        std::erase_if(rows, [&](const StockRow& row) { return !matches_one(row.goods_class, wanted.classes); });
    }
    return finished(std::move(rows), wanted, names);
}

PastStock read_stock_at(NativeConnection& database, const StockWanted& wanted, Date moment) {
    PastStock past;
    const std::optional<Date> begins = journal_begins(database);
    if (!begins || moment <= *begins) {
        past.known_from = begins.value_or(local_now());
        return past;
    }
    const std::int64_t until = movements_within(database, {std::nullopt, moment}).until;
    past.journal_was_off =
        until == all_movements.until ? journal_state(database) != JournalState::on : is_gap(database, until);
    past.rows = read_stock_before(database, wanted, until);
    return past;
}

Listing list_stock(const std::vector<StockRow>& rows) {
    constexpr auto text = CellType::text;
    constexpr auto quantity = CellType::quantity;
    Listing list{{{"warehouse", text},
                  {"warehouse_name", text},
                  {"goods", text},
                  {"goods_name", text},
                  {"model1", text},
                  {"model2", text},
                  {"status", CellType::number},
                  {"class", text},
                  {"unit", text},
                  {"received", quantity},
                  {"issued", quantity},
                  {"on_hand", quantity},
                  {"base_unit", text}},
                 {}};
    list.rows.reserve(rows.size());
    for (const StockRow& row : rows) {
        list.rows.push_back({row.warehouse, row.warehouse_name, row.goods, row.goods_name, row.model1, row.model2,
                             status_cell(row.status), row.goods_class, row.unit, row.received, row.issued, row.on_hand,
                             row.base_unit});
    }
    return list;
}

Variant status_cell(const Text& status) {
    if (status.empty()) return Null{};
    constexpr std::size_t longest = 9;  // digits that a whole number surely holds
    const bool is_number = status.size() <= longest && status.find_first_not_of(u"0123456789") == Text::npos &&
                           (status.front() != u'0' || status.size() == 1);
    return is_number ? Variant(to_long(status)) : Variant(status);
}

bool any_has_unit(const std::vector<StockRow>& rows) {
    return std::ranges::any_of(rows, [](const StockRow& row) { return !row.base_unit.empty(); });
}

Text unit_to_add(const StockRow& row, bool any_has_unit) {
    return row.base_unit.empty() && any_has_unit ? u"? " + row.goods : row.base_unit;
}

Listing group_stock(const std::vector<StockRow>& rows, const std::vector<StockGroup>& groups) {
    Listing list;
    for (const StockGroup group : groups) {
        const GroupColumn& column = group_columns[static_cast<int>(group)];
        list.columns.push_back({column.column, group == StockGroup::status ? CellType::number : CellType::text});
        if (column.name != nullptr) list.columns.push_back({column.name_column, CellType::text});
    }
    list.columns.push_back({"unit", CellType::text});
    list.columns.push_back({"rows", CellType::number});
    for (const char* const column : {"received", "issued", "on_hand"})
        list.columns.push_back({column, CellType::quantity});

    struct Sums {
        std::int32_t rows = 0;
        std::int64_t received = 0, issued = 0, on_hand = 0;
    };
    const bool has_units = any_has_unit(rows);
    std::map<std::vector<Text>, Sums> groups_of_rows;
    for (const StockRow& row : rows) {
        std::vector<Text> key;
        for (const StockGroup group : groups) {
            const GroupColumn& column = group_columns[static_cast<int>(group)];
            key.push_back(row.*column.value);
            if (column.name != nullptr) key.push_back(row.*column.name);
        }
        key.push_back(unit_to_add(row, has_units));
        Sums& sums = groups_of_rows[key];
        ++sums.rows;
        sums.received += ten_thousandths(row.received);
        sums.issued += ten_thousandths(row.issued);
        sums.on_hand += ten_thousandths(row.on_hand);
    }
    for (const auto& [key, sums] : groups_of_rows) {
        std::vector<Variant>& row = list.rows.emplace_back();
        for (std::size_t i = 0; i < key.size(); ++i) {
            const bool is_status = list.columns[i].name == "status";
            row.push_back(is_status ? status_cell(key[i]) : Variant(key[i]));
        }
        row.emplace_back(sums.rows);
        for (const std::int64_t sum : {sums.received, sums.issued, sums.on_hand})
            row.emplace_back(Currency::from_ten_thousandths(sum));
    }
    return list;
}

}  // namespace vantlo
