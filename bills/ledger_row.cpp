#include "bills/ledger_row.h"

#include <algorithm>
#include <tuple>

#include "automation/message.h"
#include "automation/number_text.h"
#include "automation/text_value.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message key_with_status = {"{} 状态 {}", "{}, status {}"};
// clang-format on

}  // namespace words

namespace {

Currency quantity_of(const Variant& value) { return value.is<Null>() ? Currency() : to_currency(value); }

}  // namespace

LedgerRow ledger_row(Recordset& rows, bool has_names) {
    const auto text = [&](TextView column) { return text_or_empty(rows.field(column)); };
    const auto name = [&](TextView column) { return has_names ? text(column) : Text(); };
    const auto quantity = [&](TextView column) { return quantity_of(rows.field(column)); };
    return {text(u"WID"),    name(u"WarehouseName"), text(u"GId"),        name(u"GoodsName"),
            text(u"Model1"), text(u"Model2"),        text(u"Status"),     text(u"Class"),
            text(u"Unit"),   quantity(u"InQty"),     quantity(u"OutQty"), quantity(u"CurrentQty")};
}

std::string key_text(const LedgerRow& row, Language language) {
    std::string key = to_utf8(row.warehouse);
    for (const Text* const part : {&row.goods, &row.model1, &row.model2}) {
        if (!part->empty()) key += " " + to_utf8(*part);
    }
    return say(language, words::key_with_status, key, to_utf8(row.status));
}

std::string quantity_text(Currency value) { return to_utf8(number_text(value)); }

std::vector<LedgerRow> read_ledger(Connection& database, const LedgerFilter& filter) {
    Text select =
        u"select Inventory.*,Warehouse.Name as WarehouseName,Goods.Name as GoodsName from Inventory "
        u"left join Warehouse on Inventory.WID=Warehouse.ID left join Goods on Inventory.GId=Goods.ID where 1=1";
    if (!filter.warehouse.empty()) select += u" and Inventory.WID=" + GetSqlVal(filter.warehouse);
    if (!filter.goods.empty()) select += u" and Inventory.GId=" + GetSqlVal(filter.goods);
    if (!filter.goods_class.empty()) select += u" and Inventory.Class=" + GetSqlVal(filter.goods_class);
    if (filter.status) select += u" and Inventory.Status=" + GetSqlVal(*filter.status);
    std::vector<LedgerRow> ledger;
    const RecordsetVariable rows = database.execute(select);
    for (; !rows->eof(); rows->move_next()) ledger.push_back(ledger_row(*rows, true));
    const auto key = [](const LedgerRow& row) {
        return std::tie(row.warehouse, row.goods, row.model1, row.model2, row.status);
    };
    std::ranges::stable_sort(ledger, {}, key);
    return ledger;
}

}  // namespace vantlo
