#include "bills/bill_kinds.h"

#include <algorithm>

namespace vantlo {

namespace {

// clang-format off

constexpr auto text = ColumnType::text;
constexpr auto single = ColumnType::single;
constexpr auto whole = ColumnType::whole_number;
constexpr auto date = ColumnType::date;

constexpr BillColumn stock_header_columns[] = {
    {"date", u"BillDate", date}, {"status", u"ReferFlag", whole}, {"remarks", u"Remarks", text},
};
constexpr BillColumn stock_line_columns[] = {
    {"receiver", u"Receiver", text}, {"supplier", u"Supplier", text}, {"goods", u"Gid", text},
    {"model1", u"Model1", text}, {"model2", u"Model2", text}, {"class", u"Class", text}, {"unit", u"Unit", text},
    {"quantity", u"Actualqty", single}, {"quantity", u"Qty", single}, {"status", u"Goodstutas", whole},
    {"remarks", u"Remarks", text},
};
constexpr BillColumn repair_header_columns[] = {
    {"date", u"BillDate", date}, {"receiver", u"Receiver", text}, {"supplier", u"Supplier", text},
    {"remarks", u"Remarks", text},
};
constexpr BillColumn repair_line_columns[] = {
    {"warehouse", u"WID", text}, {"status_warehouse", u"StatusWID", text}, {"goods", u"Gid", text},
    {"model1", u"Model1", text}, {"model2", u"Model2", text}, {"class", u"Class", text}, {"unit", u"Unit", text},
    {"quantity", u"Qty", single}, {"status", u"GoodsStatus", whole}, {"remarks", u"SpRemarks", text},
};
constexpr BillColumn borrow_header_columns[] = {
    {"date", u"BillDate", date}, {"remarks", u"Remarks", text},
};
constexpr BillColumn borrow_line_columns[] = {
    {"receiver", u"Receiver", text}, {"supplier", u"Supplier", text}, {"goods", u"Gid", text},
    {"model1", u"Model1", text}, {"model2", u"Model2", text}, {"class", u"Class", text}, {"unit", u"Unit", text},
    {"quantity", u"UQty", single}, {"status", u"Goodstutas", whole}, {"remarks", u"Remarks", text},
};
constexpr BillColumn goods_header_columns[] = {
    {"date", u"BillDate", date}, {"warehouse", u"WareHouseID", text}, {"goods", u"Gid", text},
    {"model1", u"Model1", text}, {"model2", u"Model2", text}, {"class", u"Class", text}, {"unit", u"Unit", text},
    {"quantity", u"Actualqty", single}, {"status", u"Goodstutas", whole}, {"remarks", u"Remarks", text},
};
constexpr BillColumn goods_line_columns[] = {
    {"warehouse", u"WareHouseID", text}, {"goods", u"Gid", text},
    {"model1", u"Model1", text}, {"model2", u"Model2", text}, {"class", u"Class", text}, {"unit", u"Unit", text},
    {"quantity", u"Actualqty", single}, {"status", u"Goodstutas", whole}, {"remarks", u"Remarks", text},
};

constexpr BillTable stock_bill   {u"StockBill",        u"Id",     stock_header_columns};
constexpr BillTable stock_lines  {u"StockBillItems",   u"BillId", stock_line_columns};
constexpr BillTable repair_bill  {u"RGstockBill",      u"id",     repair_header_columns};
constexpr BillTable repair_lines {u"RGstockBillItems", u"BillId", repair_line_columns};
constexpr BillTable borrow_bill  {u"GBorrow",          u"Id",     borrow_header_columns};
constexpr BillTable borrow_lines {u"GBorrowItems",     u"BillId", borrow_line_columns};
constexpr BillTable goods_bill   {u"GoodsBill",        u"Id",     goods_header_columns};
constexpr BillTable goods_lines  {u"GoodsBillItems",   u"BillId", goods_line_columns};

constexpr Feed line[] = {Feed::line};
constexpr Feed id[] = {Feed::id};
constexpr Feed line_and_status[] = {Feed::line, Feed::header_status};
constexpr Feed line_and_warehouses[] = {Feed::line, Feed::header_receiver, Feed::header_supplier};
constexpr Feed whole_bill_under_status[] = {Feed::id, Feed::any_class, Feed::any_main_goods_flag, Feed::header_status};
constexpr Feed signed_line[] = {Feed::line, Feed::signed_quantity, Feed::header_status};
constexpr Feed signed_bill[] = {Feed::id, Feed::signed_quantity, Feed::header_status};
constexpr Feed magnitude_line[] = {Feed::line, Feed::magnitude, Feed::header_status};
constexpr Feed magnitude_bill[] = {Feed::id, Feed::magnitude, Feed::header_status};

constexpr MemberCall post_stock_bill[] = {{u"AddInventory_Db", line}};
constexpr MemberCall back_stock_bill[] = {{u"ReduceInventory_Db", id}};
constexpr MemberCall post_stock_in[] = {{u"In_AddInventory", line_and_status}};
constexpr MemberCall back_stock_in[] = {{u"In_ReduceInventory", whole_bill_under_status}};
constexpr MemberCall post_stock_out[] = {{u"Out_ReduceInventory", signed_line}};
constexpr MemberCall back_stock_out[] = {{u"Out_AddInventory", signed_bill}};
constexpr MemberCall post_stock_out_magnitude[] = {{u"Out_ReduceInventory", magnitude_line}};
constexpr MemberCall back_stock_out_magnitude[] = {{u"Out_AddInventory", magnitude_bill}};
constexpr MemberCall post_loss[] = {{u"Loss_ReduceInventory", line_and_status}};
constexpr MemberCall back_loss[] = {{u"Loss_AddInventory", id}};
constexpr MemberCall post_overage[] = {{u"Over_AddInventory", line_and_status}};
constexpr MemberCall back_overage[] = {{u"Over_ReduceInventory", id}};
constexpr MemberCall post_sales_return[] = {{u"SaleIn_AddInventory", line}};
constexpr MemberCall back_sales_return[] = {{u"SaleIn_ReduceInventory", id}};
constexpr MemberCall post_return_repair[] = {{u"RG_AddInventory_Db", line_and_warehouses}};
constexpr MemberCall back_return_repair[] = {{u"RG_ReduceInventory_Db", id}};
constexpr MemberCall post_repair_in[] = {{u"RG_In_AddInventory", line}};
constexpr MemberCall back_repair_in[] = {{u"RG_In_ReduceInventory", line}};
constexpr MemberCall post_repair_in_status[] = {{u"RG_In_AddInventoryStatus", line}};
constexpr MemberCall back_repair_in_status[] = {{u"RG_In_ReduceInventoryStatus", line}};
constexpr MemberCall post_repair_out[] = {{u"RG_Out_ReduceInventory", line}};
constexpr MemberCall back_repair_out[] = {{u"RG_Out_AddInventory", line}};
constexpr MemberCall post_transfer[] = {{u"Hj_AddInventory_Db", line_and_warehouses}};
constexpr MemberCall back_transfer[] = {{u"Hj_ReduceInventory_Db", id}};
constexpr MemberCall post_repaired_in[] = {{u"XFP_In_AddInventory", line}};
constexpr MemberCall back_repaired_in[] = {{u"XFP_In_ReduceInventory", line}};
constexpr MemberCall post_repaired_out[] = {{u"XFP_Out_ReduceInventory", line}};
constexpr MemberCall back_repaired_out[] = {{u"XFP_Out_AddInventory", line}};
constexpr MemberCall post_conversion[] = {{u"GoodsConvert_AddItems_ChangeInventory", line_and_status}};
constexpr MemberCall back_conversion[] = {{u"GoodsConvert_DelItems_ChangeInventory", id}};
constexpr MemberCall post_borrow_out[] = {{u"BorrowOut_ReduceInventory", id}};
constexpr MemberCall back_borrow_out[] = {{u"BorrowOut_AddInventory", line}};
constexpr MemberCall post_borrow_in[] = {{u"BorrowIn_AddInventory", line}};
constexpr MemberCall back_borrow_in[] = {{u"BorrowIn_ReduceInventory", id}};
constexpr MemberCall post_assembly[] = {{u"ReduceInventory_ZZD_ZJ", id}, {u"AddInventory_ZZD_MJ", id}};
constexpr MemberCall back_assembly[] = {{u"AddInventory_ZZD_ZJ", id}, {u"ReduceInventory_ZZD_MJ", id}};
constexpr MemberCall post_disassembly[] = {{u"ReduceInventory_CXD_MJ", id}, {u"AddInventory_CXD_ZJ", id}};
constexpr MemberCall back_disassembly[] = {{u"ReduceInventory_CXD_ZJ", id}, {u"AddInventory_CXD_MJ", id}};

constexpr BillKind kinds[] = {
    //name                  Chinese             header        lines          WarehouseId   posts                     takes back
    {"stock",               "进出库单",         &stock_bill,  &stock_lines,  nullptr,      post_stock_bill,          back_stock_bill},
    {"stock-in",            "入库单",           &stock_bill,  &stock_lines,  nullptr,      post_stock_in,            back_stock_in},
    {"stock-out",           "出库单",           &stock_bill,  &stock_lines,  nullptr,      post_stock_out,           back_stock_out},
    {"stock-out-magnitude", "出库单（绝对值）", &stock_bill,  &stock_lines,  nullptr,      post_stock_out_magnitude, back_stock_out_magnitude},
    {"loss",                "报损单",           &stock_bill,  &stock_lines,  u"Supplier",  post_loss,                back_loss},
    {"overage",             "报溢单",           &stock_bill,  &stock_lines,  u"Receiver",  post_overage,             back_overage},
    {"sales-return",        "销售退货单",       &stock_bill,  &stock_lines,  nullptr,      post_sales_return,        back_sales_return},
    {"return-repair",       "返修单",           &repair_bill, &repair_lines, nullptr,      post_return_repair,       back_return_repair},
    {"repair-in",           "返修入库单",       &repair_bill, &repair_lines, nullptr,      post_repair_in,           back_repair_in},
    {"repair-in-status",    "返修入库单（按状态）", &repair_bill, &repair_lines, nullptr,  post_repair_in_status,    back_repair_in_status},
    {"repair-out",          "返修出库单",       &repair_bill, &repair_lines, nullptr,      post_repair_out,          back_repair_out},
    {"transfer",            "换机调拨单",       &repair_bill, &repair_lines, nullptr,      post_transfer,            back_transfer},
    {"repaired-in",         "修复品入库单",     &repair_bill, &repair_lines, nullptr,      post_repaired_in,         back_repaired_in},
    {"repaired-out",        "修复品出库单",     &repair_bill, &repair_lines, nullptr,      post_repaired_out,        back_repaired_out},
    {"conversion",          "状态转换单",       &stock_bill,  &stock_lines,  nullptr,      post_conversion,          back_conversion},
    {"borrow-out",          "借出单",           &borrow_bill, &borrow_lines, nullptr,      post_borrow_out,          back_borrow_out},
    {"borrow-in",           "借入单",           &borrow_bill, &borrow_lines, nullptr,      post_borrow_in,           back_borrow_in},
    {"assembly",            "组装单",           &goods_bill,  &goods_lines,  nullptr,      post_assembly,            back_assembly},
    {"disassembly",         "拆卸单",           &goods_bill,  &goods_lines,  nullptr,      post_disassembly,         back_disassembly},
};

// clang-format on

}  // namespace

std::span<const BillKind> bill_kinds() { return kinds; }

const BillKind* find_bill_kind(std::string_view name) {
    const auto found = std::ranges::find(kinds, name, &BillKind::name);
    return found == std::end(kinds) ? nullptr : found;
}

}  // namespace vantlo
