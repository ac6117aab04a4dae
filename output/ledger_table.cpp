#include "output/ledger_table.h"

#include <algorithm>

namespace vantlo {

namespace {

Text text_in(const std::vector<Variant>& row, std::size_t column) { return to_text(row[column]); }

bool has_several(const Listing& list, std::size_t column) {
    return std::ranges::any_of(list.rows, [&](const auto& row) { return !(row[column] == list.rows.front()[column]); });
}

}  // namespace

std::string named(const Text& id, const Text& name) { return to_utf8(name.empty() ? id : id + u" " + name); }

Listing ledger_for_people(const Listing& stock) {
    const std::size_t warehouse = *stock.find("warehouse"), warehouse_name = *stock.find("warehouse_name");
    const std::size_t goods = *stock.find("goods"), goods_name = *stock.find("goods_name");
    const std::size_t base_unit = *stock.find("base_unit");
    const bool has_units = has_several(stock, base_unit);
    std::vector<std::size_t> kept;
    for (const char* const column : {"model1", "model2", "status", "received", "issued", "on_hand"})
        kept.push_back(*stock.find(column));
    if (has_units) kept.insert(kept.begin() + 3, base_unit);

    Listing list{{stock.columns[warehouse], stock.columns[goods]}, {}};
    for (const std::size_t column : kept) list.columns.push_back(stock.columns[column]);
    if (has_units) list.columns[5].name = "unit";
    list.rows.reserve(stock.rows.size());
    for (const std::vector<Variant>& row : stock.rows) {
        std::vector<Variant>& shown = list.rows.emplace_back();
        shown = {from_utf8(named(text_in(row, warehouse), text_in(row, warehouse_name))),
                 from_utf8(named(text_in(row, goods), text_in(row, goods_name)))};
        for (const std::size_t column : kept) shown.push_back(row[column]);
    }
    return list;
}

}  // namespace vantlo
