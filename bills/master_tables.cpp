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

constexpr BillColumn minimum_columns[] = {
    {"goods", u"GId", ColumnType::text}, {"warehouse", u"WID", ColumnType::text},
    {"model1", u"Model1", ColumnType::text}, {"model2", u"Model2", ColumnType::text},
    {"status", u"Status", ColumnType::whole_number}, {"minimum", u"Minimum", ColumnType::single},
};

constexpr MasterTable tables[] = {
    //field         table            columns            keys needed
    {"warehouses", u"Warehouse",    warehouse_columns, 1,   1},
    {"goods",      u"Goods",        goods_columns,     1,   1},
    {"units",      u"GoodsUnit",    unit_columns,      2,   2},
    {"minimums",   u"StockMinimum", minimum_columns,   5,   1},
};
// clang-format on

}  // namespace

std::span<const MasterTable> master_tables() { return tables; }

const MasterTable* find_master_table(std::string_view field) {
    const auto found = std::ranges::find(tables, field, &MasterTable::field);
    return found == std::end(tables) ? nullptr : found;
}

}  // namespace vantlo
