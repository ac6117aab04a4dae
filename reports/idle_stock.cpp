#include "reports/idle_stock.h"

#include <map>
#include <tuple>

#include "automation/text_value.h"
#include "reports/movements.h"
#include "reports/stock.h"

namespace vantlo {

namespace {

using StockKey = std::tuple<Text, Text, Text, Text, Text>;

/// The time of each key's last movement, openings apart.
std::map<StockKey, Date> read_last_movements(NativeConnection& database, const Text& condition) {
    const RecordsetVariable rows = database.execute(
        u"select m.WID as WID,m.GId as GId,m.Model1 as Model1,m.Model2 as Model2,m.Status as Status,"
        u"m.MovedAt as MovedAt from StockMovement m join (select max(MovementNo) as LastNo from StockMovement "
        u"where Action<>'opening'" +
        condition + u" group by GId,WID,Model1,Model2,Status) n on n.LastNo=m.MovementNo");
    std::map<StockKey, Date> last;
    for (; !rows->eof(); rows->move_next()) {
        const auto text = [&](TextView column) { return text_or_empty(rows->field(column)); };
        const Variant clock = rows->field(u"MovedAt");
        if (!clock.is<Date>()) continue;
        last[{text(u"WID"), text(u"GId"), text(u"Model1"), text(u"Model2"), text(u"Status")}] =
            local_time(database.dialect(), *clock.get_if<Date>());
    }
    return last;
}

}  // namespace

Listing list_idle_stock(NativeConnection& database, const IdleWanted& wanted) {
    constexpr auto text = CellType::text;
    Listing list{{{"goods", text},
                  {"goods_name", text},
                  {"warehouse", text},
                  {"model1", text},
                  {"model2", text},
                  {"status", CellType::number},
                  {"unit", text},
                  {"on_hand", CellType::quantity},
                  {"last_moved", CellType::time}},
                 {}};
    const Text condition = and_matches(u"WID", wanted.warehouses) + and_matches(u"GId", wanted.goods);
    const std::map<StockKey, Date> last = read_last_movements(database, condition);
    StockWanted stock{.warehouses = wanted.warehouses, .goods = wanted.goods, .nonzero = true};
    for (const StockRow& row : read_stock(database, stock)) {
        const auto moved = last.find({row.warehouse, row.goods, row.model1, row.model2, row.status});
        if (moved != last.end() && moved->second >= wanted.since) continue;
        list.rows.push_back({row.goods, row.goods_name, row.warehouse, row.model1, row.model2, status_cell(row.status),
                             row.base_unit, row.on_hand,
                             moved == last.end() ? Variant(Null{}) : Variant(moved->second)});
    }
    list.sort_by(*list.find("last_moved"), false);
    return list;
}

}  // namespace vantlo
