#include "reports/minimums.h"

#include <map>

#include "automation/text_value.h"
#include "reports/names.h"

namespace vantlo {

namespace {

/// What a warehouse has of a model in a status.
struct Stock {
    Text warehouse, model1, model2, status;
    std::int64_t on_hand = 0;  ///< in ten-thousandths
};

using StockOfGoods = std::map<Text, std::vector<Stock>>;

std::int64_t ten_thousandths(const Variant& value) {
    return value.is<Null>() ? 0 : to_currency(value).ten_thousandths();
}

StockOfGoods read_stock_of(NativeConnection& database, const Text& goods_with_minimum) {
    const Text sum = replace_all(database.dialect().exact_sum, u'?', u"CurrentQty");
    const RecordsetVariable rows =
        database.execute(u"select WID,GId,Model1,Model2,Status," + sum + u" as OnHand from Inventory where GId in (" +
                         goods_with_minimum + u") group by WID,GId,Model1,Model2,Status");
    StockOfGoods stock;
    for (; !rows->eof(); rows->move_next()) {
        const auto text = [&](TextView column) { return text_or_empty(rows->field(column)); };
        stock[text(u"GId")].push_back(
            {text(u"WID"), text(u"Model1"), text(u"Model2"), text(u"Status"), ten_thousandths(rows->field(u"OnHand"))});
    }
    return stock;
}

std::int64_t on_hand(const StockOfGoods& stock, const Text& goods, const Stock& minimum) {
    const auto found = stock.find(goods);
    if (found == stock.end()) return 0;
    const auto is_of = [](const Text& wanted, const Text& value) { return wanted.empty() || wanted == value; };
    std::int64_t sum = 0;
    for (const Stock& row : found->second) {
        if (is_of(minimum.warehouse, row.warehouse) && is_of(minimum.model1, row.model1) &&
            is_of(minimum.model2, row.model2) && minimum.status == row.status)
            sum += row.on_hand;
    }
    return sum;
}

}  // namespace

Listing list_minimums(NativeConnection& database, const MinimumsWanted& wanted) {
    constexpr auto text = CellType::text;
    constexpr auto quantity = CellType::quantity;
    Listing list{{{"goods", text},
                  {"goods_name", text},
                  {"warehouse", text},
                  {"model1", text},
                  {"model2", text},
                  {"status", CellType::number},
                  {"unit", text},
                  {"minimum", quantity},
                  {"on_hand", quantity},
                  {"shortage", quantity}},
                 {}};
    const Text condition = u" from StockMinimum where Minimum>0" + and_matches(u"GId", wanted.goods) +
                           and_matches(u"WID", wanted.warehouses);
    const RecordsetVariable minimums = database.execute(u"select GId,WID,Model1,Model2,Status,Minimum" + condition +
                                                        u" order by GId,WID,Model1,Model2,Status");
    const StockOfGoods stock = read_stock_of(database, u"select GId" + condition);
    const std::map<Text, Text> names = read_names(database, u"Goods");
    const std::map<Text, Text> units = read_texts(database, u"Goods", u"Unit");
    const auto of_goods = [](const std::map<Text, Text>& texts, const Text& goods) {
        const auto found = texts.find(goods);
        return found == texts.end() ? Text() : found->second;
    };
    for (; !minimums->eof(); minimums->move_next()) {
        const auto field = [&](TextView column) { return text_or_empty(minimums->field(column)); };
        const Text goods = field(u"GId");
        const Stock row{field(u"WID"), field(u"Model1"), field(u"Model2"), field(u"Status")};
        const std::int64_t minimum = ten_thousandths(minimums->field(u"Minimum"));
        const std::int64_t there = on_hand(stock, goods, row);
        if (there >= minimum && !wanted.with_enough) continue;
        const auto cell = [](std::int64_t amount) { return Variant(Currency::from_ten_thousandths(amount)); };
        list.rows.push_back({goods, of_goods(names, goods), row.warehouse, row.model1, row.model2,
                             minimums->field(u"Status"), of_goods(units, goods), cell(minimum), cell(there),
                             cell(there < minimum ? minimum - there : 0)});
    }
    return list;
}

}  // namespace vantlo
