#include "reports/stock_card.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "automation/text_value.h"
#include "dataaccess/sql_literals.h"
#include "reports/names.h"

namespace vantlo {

namespace {

Currency operator+(Currency left, Currency right) {
    return Currency::from_ten_thousandths(left.ten_thousandths() + right.ten_thousandths());
}

struct NamedGoods {
    Text name;
    Text unit;
};

/// Cards by their key, in the order in which they are returned.
using CardKey = std::tuple<Text, Text, Text, Text, Text>;
using Cards = std::map<CardKey, StockCard>;

StockCard& card_of(Cards& cards, Recordset& rows) {
    const auto text = [&](TextView column) { return text_or_empty(rows.field(column)); };
    const Text goods = text(u"GId"), warehouse = text(u"WID"), model1 = text(u"Model1"), model2 = text(u"Model2"),
               status = text(u"Status");
    StockCard& card = cards[{goods, warehouse, model1, model2, status}];
    card.row.goods = goods;
    card.row.warehouse = warehouse;
    card.row.model1 = model1;
    card.row.model2 = model2;
    card.row.status = status;
    return card;
}

Text condition_of(const CardsWanted& wanted) {
    Text condition = and_matches(u"GId", wanted.goods) + and_matches(u"WID", wanted.warehouses) +
                     and_matches(u"Model1", wanted.models1) + and_matches(u"Model2", wanted.models2);
    if (wanted.status) condition += u" and Status=" + GetSqlVal(*wanted.status);
    return condition;
}

void read_openings(NativeConnection& database, const Text& condition, std::int64_t until, Cards& cards) {
    if (until == 0) return;
    const Text sum = replace_all(database.dialect().exact_sum, u'?', u"CurrentChange");
    const RecordsetVariable rows = database.execute(
        u"select GId,WID,Model1,Model2,Status," + sum + u" as OnHand from StockMovement where MovementNo<" +
        from_utf8(std::to_string(until)) + condition + u" group by GId,WID,Model1,Model2,Status");
    for (; !rows->eof(); rows->move_next()) card_of(cards, *rows).opening = to_currency(rows->field(u"OnHand"));
}

void read_entries(NativeConnection& database, const Text& condition, const MovementRange& range, Cards& cards) {
    const RecordsetVariable rows = database.execute(u"select * from StockMovement where 1=1" + and_numbered(range) +
                                                    condition + u" order by MovementNo");
    for (; !rows->eof(); rows->move_next()) {
        const auto text = [&](TextView column) { return text_or_empty(rows->field(column)); };
        StockCard& card = card_of(cards, *rows);
        CardEntry entry;
        entry.action = text(u"Action");
        entry.change = to_currency(rows->field(u"CurrentChange"));
        if (entry.action == u"opening") {
            card.opening = card.opening + entry.change;
            continue;
        }
        const Variant clock = rows->field(u"MovedAt");
        if (clock.is<Date>()) entry.moved_at = local_time(database.dialect(), *clock.get_if<Date>());
        entry.bill_kind = text(u"BillKind");
        entry.bill_id = text(u"BillId");
        entry.line = rows->field(u"ItemNo");
        entry.member = text(u"Member");
        entry.user = text(u"DbUser");
        entry.program = text(u"Program");
        entry.received = to_currency(rows->field(u"InChange"));
        entry.issued = to_currency(rows->field(u"OutChange"));
        card.entries.push_back(std::move(entry));
    }
}

std::map<Text, NamedGoods> read_goods(NativeConnection& database, const std::vector<Text>& goods) {
    std::map<Text, NamedGoods> named;
    const RecordsetVariable rows =
        database.execute(u"select ID,Name,Unit from Goods where 1=1" + and_matches(u"ID", goods));
    for (; !rows->eof(); rows->move_next()) {
        named[text_or_empty(rows->field(u"ID"))] = {text_or_empty(rows->field(u"Name")),
                                                    text_or_empty(rows->field(u"Unit"))};
    }
    return named;
}

/// Balances and sums, once all entries are there.
void add_up(StockCard& card) {
    Currency balance = card.opening;
    for (CardEntry& entry : card.entries) {
        balance = balance + entry.change;
        entry.balance = balance;
        card.row.received = card.row.received + entry.received;
        card.row.issued = card.row.issued + entry.issued;
    }
    card.closing = card.row.on_hand = balance;
}

}  // namespace

std::vector<StockCard> read_cards(NativeConnection& database, const CardsWanted& wanted) {
    MovementRange range = movements_within(database, wanted.period);
    range.from = std::max(range.from, wanted.from);
    const Text condition = condition_of(wanted);
    Cards cards;
    read_openings(database, condition, range.from, cards);
    read_entries(database, condition, range, cards);
    const std::map<Text, NamedGoods> goods = read_goods(database, wanted.goods);
    const std::map<Text, Text> warehouses = read_names(database, u"Warehouse");
    std::vector<StockCard> sorted;
    for (auto& [key, card] : cards) {
        add_up(card);
        if (wanted.without_bill)
            std::erase_if(card.entries, [](const CardEntry& entry) { return !entry.bill_kind.empty(); });
        const bool has_stock = card.opening != Currency() && !wanted.without_bill;
        if (card.entries.empty() && !has_stock) continue;
        if (const auto found = goods.find(card.row.goods); found != goods.end()) {
            card.row.goods_name = found->second.name;
            card.row.unit = found->second.unit;
        }
        if (const auto found = warehouses.find(card.row.warehouse); found != warehouses.end())
            card.row.warehouse_name = found->second;
        sorted.push_back(std::move(card));
    }
    return sorted;
}

}  // namespace vantlo
