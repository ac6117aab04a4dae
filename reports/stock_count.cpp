#include "reports/stock_count.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>

#include "automation/calendar.h"
#include "automation/number_text.h"
#include "automation/text_value.h"
#include "bookkeeping/journal.h"
#include "dataaccess/sql_literals.h"
#include "reports/movements.h"

namespace vantlo {

namespace {

constexpr TextView name_prefix = u"PD";
constexpr std::size_t digits_of_moment = 14;  // yyyyMMddHHmmss

Text digits_of(Date moment) {
    Text digits;
    for (const char16_t sign : format_date_time(moment)) {
        if (sign >= u'0' && sign <= u'9') digits += sign;
    }
    return digits;
}

std::optional<Date> moment_of(TextView digits) {
    if (digits.size() != digits_of_moment) return std::nullopt;
    const auto part = [&](std::size_t from, std::size_t count) { return Text(digits.substr(from, count)); };
    return date_from_text(part(0, 4) + u"-" + part(4, 2) + u"-" + part(6, 2) + u" " + part(8, 2) + u":" + part(10, 2) +
                          u":" + part(12, 2));
}

bool is_number(TextView text) {
    return !text.empty() && text.size() <= 18 && text.find_first_not_of(u"0123456789") == TextView::npos;
}

Currency quantity_of(const Variant& quantity) {
    const Currency* const number = quantity.get_if<Currency>();
    return number == nullptr ? Currency() : *number;
}

Currency sum_of(Currency left, Currency right) {
    return Currency::from_ten_thousandths(left.ten_thousandths() + right.ten_thousandths());
}

/// Nothing for a row whose status is no number: no bill could move it.
std::optional<CountKey> key_of(const StockRow& row) {
    const Variant status = status_cell(row.status);
    const std::int32_t* const number = status.get_if<std::int32_t>();
    if (number == nullptr) return std::nullopt;
    return CountKey{row.goods, row.model1, row.model2, *number};
}

struct Stock {
    StockRow row;  ///< the first of its key
    Currency on_hand;
};

using StockByKey = std::map<CountKey, Stock>;

StockByKey by_key(const std::vector<StockRow>& rows) {
    StockByKey stock;
    for (const StockRow& row : rows) {
        const std::optional<CountKey> key = key_of(row);
        if (!key) continue;
        Stock& sum = stock.try_emplace(*key, Stock{row, {}}).first->second;
        sum.on_hand = sum_of(sum.on_hand, quantity_of(row.on_hand));
    }
    return stock;
}

Currency on_hand_of(const StockByKey& stock, const CountKey& key) {
    const auto found = stock.find(key);
    return found == stock.end() ? Currency() : found->second.on_hand;
}

/// What the master table of goods tells.
struct GoodsFacts {
    Text name, goods_class, unit;
};

std::map<Text, GoodsFacts> read_goods(NativeConnection& database) {
    std::map<Text, GoodsFacts> goods;
    const RecordsetVariable rows = database.execute(u"select ID,Name,Class,Unit from Goods");
    for (; !rows->eof(); rows->move_next()) {
        const auto text = [&](TextView column) { return text_or_empty(rows->field(column)); };
        goods[text(u"ID")] = {text(u"Name"), text(u"Class"), text(u"Unit")};
    }
    return goods;
}

std::vector<Text> bills_of(NativeConnection& database, const SheetName& name) {
    std::vector<Text> ids;
    const RecordsetVariable rows = database.execute(u"select Id from StockBill where 1=1" +
                                                    and_matches(u"Id", {name.text + u"-*"}) + u" order by Id");
    for (; !rows->eof(); rows->move_next()) ids.push_back(text_or_empty(rows->field(u"Id")));
    return ids;
}

/// Without a journal the sheet alone knows what there was: any other stock has moved since.
std::vector<Text> goods_moved_since(const CountedSheet& sheet, const StockByKey& now) {
    std::set<Text> moved;
    std::set<CountKey> on_sheet;
    for (const CountedLine& line : sheet.lines) {
        on_sheet.insert(line.key);
        if (line.expected && *line.expected != on_hand_of(now, line.key)) moved.insert(line.key.goods);
    }
    for (const auto& [key, stock] : now) {
        if (!on_sheet.contains(key) && stock.on_hand != Currency()) moved.insert(key.goods);
    }
    return {moved.begin(), moved.end()};
}

/// The Singles that add up to a quantity, in ten-thousandths: one, unless it has more digits than a stored Single keeps.
std::vector<float> in_singles(std::int64_t quantity) {
    constexpr std::int64_t six_digits = 1000000;
    const auto single_of = [](std::int64_t amount) {
        return static_cast<float>(Currency::from_ten_thousandths(amount).to_double());
    };
    const auto is_kept = [&](std::int64_t amount) {
        return currency_from_text(number_text(single_of(amount))) == Currency::from_ten_thousandths(amount);
    };
    std::vector<float> singles;
    while (quantity > 0) {
        std::int64_t part = quantity;
        for (std::int64_t unit = 1; !is_kept(part) && part / unit >= six_digits; part = quantity / unit * unit)
            unit *= 10;
        singles.push_back(single_of(part));
        quantity -= part;
    }
    return singles;
}

}  // namespace

SheetName new_sheet_name(NativeConnection& database) {
    const JournalState state = journal_state(database);
    SheetName name{{}, moment_of(digits_of(local_now())).value_or(local_now()), std::nullopt};
    if (state == JournalState::on) name.next_movement = movement_numbers(database).last + 1;
    std::random_device random;
    constexpr TextView hexadecimal = u"0123456789abcdef";
    Text tail;
    for (int i = 0; i < 4; ++i) tail += hexadecimal[random() % hexadecimal.size()];
    name.text = Text(name_prefix) + digits_of(name.made_at) + u"-" +
                (name.next_movement ? from_utf8(std::to_string(*name.next_movement)) : Text(u"x")) + u"-" + tail;
    return name;
}

std::optional<SheetName> sheet_name_from(const Text& text) {
    if (!text.starts_with(name_prefix)) return std::nullopt;
    const TextView rest = TextView(text).substr(name_prefix.size());
    const std::size_t number = rest.find(u'-');
    const std::size_t tail = number == TextView::npos ? number : rest.find(u'-', number + 1);
    if (tail == TextView::npos || rest.size() != tail + 5) return std::nullopt;
    const std::optional<Date> moment = moment_of(rest.substr(0, number));
    const TextView movement = rest.substr(number + 1, tail - number - 1);
    if (!moment || (movement != u"x" && !is_number(movement))) return std::nullopt;
    SheetName name{text, *moment, std::nullopt};
    if (movement != u"x") name.next_movement = std::stoll(to_utf8(movement));
    return name;
}

CountComparison compare_count(NativeConnection& database, const CountedSheet& sheet) {
    CountComparison comparison;
    const auto obstacle = [&](CountObstacle what, std::vector<Text> names = {}) {
        comparison.obstacle = what;
        comparison.names = std::move(names);
        return comparison;
    };
    if (std::vector<Text> bills = bills_of(database, sheet.name); !bills.empty())
        return obstacle(CountObstacle::entered_already, std::move(bills));

    const StockWanted of_warehouse{.warehouses = {sheet.warehouse}};
    const StockByKey now = by_key(read_stock(database, of_warehouse));
    StockByKey then = now;
    if (sheet.name.next_movement) {
        const JournalState state = journal_state(database);
        if (state == JournalState::absent || state == JournalState::unsupported ||
            !was_next_movement_at(database, *sheet.name.next_movement, sheet.name.made_at))
            return obstacle(CountObstacle::other_journal);
        then = by_key(read_stock_before(database, of_warehouse, *sheet.name.next_movement));
    } else {
        const bool tells =
            std::ranges::any_of(sheet.lines, [](const CountedLine& line) { return line.expected.has_value(); });
        if (!tells && !now.empty()) return obstacle(CountObstacle::nothing_expected);
        if (std::vector<Text> moved = goods_moved_since(sheet, now); !moved.empty())
            return obstacle(CountObstacle::moved_since, std::move(moved));
    }

    const std::map<Text, GoodsFacts> goods = read_goods(database);
    std::set<Text> unknown;
    for (const CountedLine& line : sheet.lines) {
        if (!line.counted) {
            ++comparison.not_counted;
            continue;
        }
        const auto known = goods.find(line.key.goods);
        const auto in_ledger = now.find(line.key);
        if (known == goods.end() && in_ledger == now.end() && !then.contains(line.key)) unknown.insert(line.key.goods);
        CountDifference& row = comparison.counted.emplace_back();
        row.key = line.key;
        if (known != goods.end()) {
            row.goods_name = known->second.name;
            row.goods_class = known->second.goods_class;
            row.unit = known->second.unit;
        }
        if (in_ledger != now.end() && !in_ledger->second.row.goods_class.empty())
            row.goods_class = in_ledger->second.row.goods_class;
        row.expected = on_hand_of(then, line.key);
        row.counted = *line.counted;
        row.moved_since = on_hand_of(now, line.key) - row.expected;
    }
    if (!unknown.empty()) return obstacle(CountObstacle::unknown_goods, {unknown.begin(), unknown.end()});
    return comparison;
}

std::vector<Bill> count_bills(const CountedSheet& sheet, const std::vector<CountDifference>& counted) {
    struct Side {
        const char* kind;
        const char16_t* mark;
        const char16_t* warehouse_column;
        int sign;
    };
    constexpr Side sides[] = {{"loss", u"-L", u"Supplier", -1}, {"overage", u"-O", u"Receiver", 1}};
    std::set<std::int32_t> statuses;
    for (const CountDifference& row : counted) statuses.insert(row.key.status);
    std::vector<Bill> bills;
    for (const std::int32_t status : statuses) {
        for (const Side& side : sides) {
            const BillKind& kind = *find_bill_kind(side.kind);
            Bill bill{&kind,
                      sheet.name.text + side.mark + from_utf8(std::to_string(status)),
                      empty_record(kind.header->columns),
                      {}};
            bill.header.replace(u"BillDate", Date{std::floor(sheet.name.made_at.days)});
            bill.header.replace(u"ReferFlag", status);
            bill.header.replace(u"Remarks", u"盘点 " + sheet.name.text);
            for (const CountDifference& row : counted) {
                const std::int64_t amount = side.sign * row.difference().ten_thousandths();
                if (row.key.status != status || amount <= 0) continue;
                for (const float quantity : in_singles(amount)) {
                    Record& line = bill.lines.emplace_back(empty_record(kind.lines->columns));
                    line.replace(u"Gid", row.key.goods);
                    line.replace(u"Model1", row.key.model1);
                    line.replace(u"Model2", row.key.model2);
                    line.replace(u"Class", row.goods_class);
                    line.replace(u"Unit", row.unit);
                    line.replace(u"Actualqty", quantity);
                    line.replace(u"Qty", quantity);
                    line.replace(side.warehouse_column, sheet.warehouse);
                }
            }
            if (!bill.lines.empty()) bills.push_back(std::move(bill));
        }
    }
    return bills;
}

Listing make_count_sheet(NativeConnection& database, const SheetName& name, const Text& warehouse, bool with_all_goods,
                         bool with_expected) {
    constexpr auto text = CellType::text;
    Listing list{{{"sheet", text},
                  {"warehouse", text},
                  {"goods", text},
                  {"goods_name", text},
                  {"model1", text},
                  {"model2", text},
                  {"status", CellType::number},
                  {"unit", text},
                  {"expected", CellType::quantity},
                  {"counted", CellType::quantity}},
                 {}};
    const std::map<Text, GoodsFacts> goods = read_goods(database);
    StockByKey stock = by_key(read_stock(database, {.warehouses = {warehouse}}));
    if (with_all_goods) {
        std::set<Text> there;
        for (const auto& [key, row] : stock) there.insert(key.goods);
        for (const auto& [id, facts] : goods) {
            if (!there.contains(id)) stock[{id, {}, {}, 0}];
        }
    }
    for (const auto& [key, row] : stock) {
        const auto known = goods.find(key.goods);
        const GoodsFacts facts = known == goods.end() ? GoodsFacts() : known->second;
        list.rows.push_back({name.text, warehouse, key.goods, facts.name, key.model1, key.model2, key.status,
                             facts.unit, with_expected ? Variant(row.on_hand) : Variant(Null{}), Null{}});
    }
    // The sheet's name stands in a row even where nothing is there to be counted.
    if (list.rows.empty()) {
        list.rows.push_back({name.text, warehouse, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}});
    }
    return list;
}

}  // namespace vantlo
