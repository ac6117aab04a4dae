#include "posting/repair/one_warehouse.h"
#include "posting/repair/repair.h"

namespace vantlo::posting {

namespace {

constexpr auto unquoted = StatusForm::unquoted;
constexpr auto literal = StatusForm::literal;

// clang-format off
//                                       movement                warehouse      status            look-up   update    look-up by
constexpr OneWarehouse in_add         = {movement::receipt,      u"WID",        u"",              unquoted, unquoted};
constexpr OneWarehouse in_add_status  = {movement::receipt,      u"StatusWID",  u"GoodsStatus",   unquoted, literal};
constexpr OneWarehouse in_reduce      = {movement::receipt_back, u"WID",        u"",              unquoted, unquoted};
constexpr OneWarehouse in_reduce_status={movement::receipt_back, u"StatusWID",  u"GoodsStatus",   unquoted, literal};
constexpr OneWarehouse out_add        = {movement::issue_back,   u"WID",        u"",              unquoted, unquoted, LookupBy::open};
constexpr OneWarehouse out_reduce     = {movement::issue,        u"WID",        u"",              unquoted, unquoted};
// clang-format on

}  // namespace

void RG_In_AddInventory(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, in_add);
}

void RG_In_AddInventoryStatus(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, in_add_status);
}

void RG_In_ReduceInventory(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, in_reduce);
}

void RG_In_ReduceInventoryStatus(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, in_reduce_status);
}

/// Looks its row up by the recordset's own Open, on the project-wide connection.
void RG_Out_AddInventory(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, out_add);
}

void RG_Out_ReduceInventory(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, out_reduce);
}

}  // namespace vantlo::posting
