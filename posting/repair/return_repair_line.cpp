#include "posting/repair/one_warehouse.h"
#include "posting/repair/repair.h"

namespace vantlo::posting {

namespace {

constexpr auto digits = StatusForm::digits;
constexpr auto literal = StatusForm::literal;

// clang-format off
//                                       movement                warehouse      status            look-up  update   look-up by
constexpr OneWarehouse in_add         = {movement::receipt,      u"WID",        u"",              digits,  digits};
constexpr OneWarehouse in_add_status  = {movement::receipt,      u"StatusWID",  u"GoodsStatus",   digits,  literal};
constexpr OneWarehouse in_reduce      = {movement::receipt_back, u"WID",        u"",              digits,  digits};
constexpr OneWarehouse in_reduce_status={movement::receipt_back, u"StatusWID",  u"GoodsStatus",   digits,  literal};
constexpr OneWarehouse out_add        = {movement::issue_back,   u"WID",        u"",              digits,  digits,  LookupBy::open};
constexpr OneWarehouse out_reduce     = {movement::issue,        u"WID",        u"",              digits,  digits};
// clang-format on

}  // namespace

void RG_In_AddInventory(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, in_add);
}

void RG_In_AddInventoryStatus(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, in_add_status);
}

void RG_In_ReduceInventory(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, in_reduce);
}

void RG_In_ReduceInventoryStatus(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, in_reduce_status);
}

/// Looks its row up through the prepared recordset's own Open, on the project-wide connection.
void RG_Out_AddInventory(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, out_add);
}

void RG_Out_ReduceInventory(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, out_reduce);
}

}  // namespace vantlo::posting
