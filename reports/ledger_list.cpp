#include "reports/ledger_list.h"

namespace vantlo {

Variant status_cell(const Text& status) {
    if (status.empty()) return Null{};
    constexpr std::size_t longest = 9;  // digits that a whole number surely holds
    const bool is_number = status.size() <= longest && status.find_first_not_of(u"0123456789") == Text::npos &&
                           (status.front() != u'0' || status.size() == 1);
    return is_number ? Variant(to_long(status)) : Variant(status);
}

Listing list_ledger(const std::vector<LedgerRow>& rows) {
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
                  {"on_hand", quantity}},
                 {}};
    for (const LedgerRow& row : rows) {
        list.rows.push_back({row.warehouse, row.warehouse_name, row.goods, row.goods_name, row.model1, row.model2,
                             status_cell(row.status), row.goods_class, row.unit, row.received, row.issued,
                             row.on_hand});
    }
    return list;
}

}  // namespace vantlo
