#include "bills/master_tables.h"

#include <algorithm>

namespace vantlo {

namespace {

// clang-format off
constexpr BillColumn warehouse_columns[] = {
    {"id", u"ID", ColumnType::text}, {"name", u"Name", ColumnType::text},
};
constexpr BillColumn goods_columns[] = {
    {"id", u"ID", ColumnType::text}, {"name", u"Name", ColumnType::text}, {"class", u"Class", ColumnType::text},
    {"model", u"Model", ColumnType::text}, {"unit", u"Unit", ColumnType::text},
    {"main_goods", u"GCZYCPFlag", ColumnType::whole_number}, {"remarks", u"Remarks", ColumnType::text},
};
constexpr BillColumn unit_columns[] = {
    {"goods", u"id", ColumnType::text}, {"unit", u"Unit", ColumnType::text},
    {"factor", u"UnitConverter", ColumnType::single},
};

constexpr MasterTable tables[] = {
    //field         table         columns            keys
    {"warehouses", u"Warehouse", warehouse_columns, 1},
    {"goods",      u"Goods",     goods_columns,     1},
    {"units",      u"GoodsUnit", unit_columns,      2},
};
// clang-format on

}  // namespace

std::span<const MasterTable> master_tables() { return tables; }

const MasterTable* find_master_table(std::string_view field) {
    const auto found = std::ranges::find(tables, field, &MasterTable::field);
    return found == std::end(tables) ? nullptr : found;
}

}  // namespace vantlo
