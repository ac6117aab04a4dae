#include "tool/output/member_guide.h"

namespace vantlo {

namespace {

constexpr auto base = QuantityAs::base_units;
constexpr auto raw = QuantityAs::as_it_stands;
constexpr auto raw_when_new = QuantityAs::as_it_stands_when_new;
constexpr auto base_when_new = QuantityAs::base_units_when_new;

// clang-format off

constexpr Message rounded_once = {
    "数量先乘换算率，再舍入到四位小数。",
    "The quantity is multiplied by the factor before it is rounded to four decimals."};
constexpr Message null_fails = {
    "空数量使过账失败。",
    "A null quantity fails."};
constexpr Message filtered = {
    "sZLID 非空时只处理该类别的行；iZYCP 不为 -1 时只处理该主品标志的行。",
    "Only lines of class sZLID, unless it is empty, and with main-goods flag iZYCP, unless it is -1."};
constexpr Message magnitude_on_request = {
    "bUseAbs 为 True 时按数量的绝对值过账。",
    "With bUseAbs True the magnitude of the quantity is posted."};
constexpr Message magnitude_always = {
    "总是按数量的绝对值过账。",
    "The magnitude of the quantity is posted."};
constexpr Message lowering = {
    "供方仓库没有台账行时，插入的新行结存减少而不是增加。",
    "Where the supplier has no row, the inserted one has its stock on hand lowered, not raised."};
constexpr Message conversion = {
    "状态由转换种类决定：1: 0→1，2: 0→2，3: 2→0，4: 2→1，5: 1→2，6: 1→0，其他: 0→0。备注被覆盖。",
    "The statuses follow from the kind of conversion: 1: 0→1, 2: 0→2, 3: 2→0, 4: 2→1, 5: 1→2, 6: 1→0, any other: 0→0. "
    "Remarks are overwritten."};
constexpr Message silent_components = {
    "已有的台账行按行上的数量更新，新行按基本单位插入；失败时不显示消息。",
    "An existing row moves by the quantity as it stands, a new row is inserted in base units; a failure shows no message."};
constexpr Message silent_main_item = {
    "数量从不换算；单据没有表头时返回 1；失败时不显示消息。",
    "The quantity is never converted; the result is 1 for a bill without a header; a failure shows no message."};
constexpr Message received_from_issued = {
    "已有的台账行：收入 = 发出 - 数量，结存增加；只有新行才记为负的发出。",
    "An existing row: received becomes issued less the quantity, and stock on hand rises; only a new row gets a negative issue."};
constexpr Message repaired_new_row = {
    "新行按行上的数量插入，已有的行按基本单位更新。",
    "A new row is inserted with the quantity as it stands, an existing one moves by base units."};

constexpr MemberMove stock_bill[]        = {{Move::receipt,      u"Receiver", StatusFrom::zero, base}, {Move::issue,      u"Supplier", StatusFrom::zero, base}};
constexpr MemberMove stock_bill_back[]   = {{Move::receipt_back, u"Receiver", StatusFrom::zero, base}, {Move::issue_back, u"Supplier", StatusFrom::zero, base}};
constexpr MemberMove stock_in[]          = {{Move::receipt,      u"Receiver", StatusFrom::argument, base}};
constexpr MemberMove stock_in_back[]     = {{Move::receipt_back, u"Receiver", StatusFrom::argument, base}};
constexpr MemberMove stock_out[]         = {{Move::issue,        u"Supplier", StatusFrom::argument, base}};
constexpr MemberMove stock_out_back[]    = {{Move::issue_back,   u"Supplier", StatusFrom::argument, base}};
constexpr MemberMove loss[]              = {{Move::issue,        u"WarehouseId", StatusFrom::argument, base}};
constexpr MemberMove loss_back[]         = {{Move::issue_back,   u"Supplier", StatusFrom::bill, base}};
constexpr MemberMove overage[]           = {{Move::receipt,      u"WarehouseId", StatusFrom::argument, base}};
constexpr MemberMove overage_back[]      = {{Move::receipt_back, u"Receiver", StatusFrom::bill, base}};
constexpr MemberMove sales_return[]      = {{Move::receipt,      u"Receiver", StatusFrom::line, base}};
constexpr MemberMove sales_return_back[] = {{Move::receipt_back, u"Receiver", StatusFrom::line, base}};
constexpr MemberMove repair_bill[]       = {{Move::receipt,      u"Receiver", StatusFrom::two, base}, {Move::issue, u"Supplier", StatusFrom::two, base}};
constexpr MemberMove repair_bill_back[]  = {{Move::receipt_back, u"Receiver", StatusFrom::two, base}, {Move::issue_back_lowering, u"Supplier", StatusFrom::two, base}};
constexpr MemberMove repair_in[]         = {{Move::receipt,      u"WID", StatusFrom::one, base}};
constexpr MemberMove repair_in_back[]    = {{Move::receipt_back, u"WID", StatusFrom::one, base}};
constexpr MemberMove status_in[]         = {{Move::receipt,      u"StatusWID", StatusFrom::line, base}};
constexpr MemberMove status_in_back[]    = {{Move::receipt_back, u"StatusWID", StatusFrom::line, base}};
constexpr MemberMove repair_out[]        = {{Move::issue,        u"WID", StatusFrom::one, base}};
constexpr MemberMove repair_out_back[]   = {{Move::issue_back,   u"WID", StatusFrom::one, base}};
constexpr MemberMove transfer[]          = {{Move::receipt,      u"Receiver", StatusFrom::one, base}, {Move::issue,      u"Supplier", StatusFrom::one, base}};
constexpr MemberMove transfer_back[]     = {{Move::receipt_back, u"Receiver", StatusFrom::one, base}, {Move::issue_back, u"Supplier", StatusFrom::one, base}};
constexpr MemberMove repaired_in[]       = {{Move::receipt,      u"WID", StatusFrom::line, raw_when_new}};
constexpr MemberMove repaired_in_back[]  = {{Move::receipt_back, u"WID", StatusFrom::line, base}};
constexpr MemberMove repaired_out[]      = {{Move::issue,        u"WID", StatusFrom::line, base}};
constexpr MemberMove repaired_out_back[] = {{Move::issue_back,   u"WID", StatusFrom::line, base}};
constexpr MemberMove convert[]           = {{Move::issue,        u"Supplier", StatusFrom::conversion_source, raw}, {Move::receipt,      u"Receiver", StatusFrom::conversion_target, raw}};
constexpr MemberMove convert_back[]      = {{Move::issue_back,   u"Supplier", StatusFrom::conversion_source, raw}, {Move::receipt_back, u"Receiver", StatusFrom::conversion_target, raw}};
constexpr MemberMove lent[]              = {{Move::issue,        u"Supplier", StatusFrom::line, base}};
constexpr MemberMove lent_back[]         = {{Move::issue_back,   u"Supplier", StatusFrom::line, base}};
constexpr MemberMove borrowed[]          = {{Move::receipt,      u"Receiver", StatusFrom::line, base}};
constexpr MemberMove borrowed_back[]     = {{Move::receipt_back, u"Receiver", StatusFrom::line, base}};
constexpr MemberMove parts_out[]         = {{Move::issue,        u"WareHouseID", StatusFrom::line, base_when_new}};
constexpr MemberMove parts_out_back[]    = {{Move::issue_back,   u"WareHouseID", StatusFrom::line, base_when_new}};
constexpr MemberMove parts_in[]          = {{Move::receipt,      u"WareHouseID", StatusFrom::line, base_when_new}};
constexpr MemberMove parts_in_back[]     = {{Move::receipt_back, u"WareHouseID", StatusFrom::line, base_when_new}};
constexpr MemberMove item_in[]           = {{Move::receipt,      u"WareHouseID", StatusFrom::line, raw}};
constexpr MemberMove item_in_back[]      = {{Move::receipt_back, u"WareHouseID", StatusFrom::line, raw}};
constexpr MemberMove item_out[]          = {{Move::issue,        u"WareHouseID", StatusFrom::line, raw}};
constexpr MemberMove item_out_back[]     = {{Move::issue_back,   u"WareHouseID", StatusFrom::line, raw}};

constexpr MemberGuide guides[] = {
    //member                                    moves              note
    {u"AddInventory_Db",                        stock_bill,        &rounded_once},
    {u"ReduceInventory_Db",                     stock_bill_back,   &null_fails},
    {u"In_AddInventory",                        stock_in,          nullptr},
    {u"In_ReduceInventory",                     stock_in_back,     &filtered},
    {u"Out_AddInventory",                       stock_out_back,    &magnitude_on_request},
    {u"Out_ReduceInventory",                    stock_out,         &magnitude_on_request},
    {u"Loss_ReduceInventory",                   loss,              nullptr},
    {u"Loss_AddInventory",                      loss_back,         nullptr},
    {u"Over_AddInventory",                      overage,           nullptr},
    {u"Over_ReduceInventory",                   overage_back,      nullptr},
    {u"RG_AddInventory_Db",                     repair_bill,       nullptr},
    {u"RG_ReduceInventory_Db",                  repair_bill_back,  &lowering},
    {u"RG_In_AddInventory",                     repair_in,         nullptr},
    {u"RG_In_AddInventoryStatus",               status_in,         nullptr},
    {u"RG_In_ReduceInventory",                  repair_in_back,    nullptr},
    {u"RG_In_ReduceInventoryStatus",            status_in_back,    nullptr},
    {u"RG_Out_AddInventory",                    repair_out_back,   nullptr},
    {u"RG_Out_ReduceInventory",                 repair_out,        nullptr},
    {u"Hj_AddInventory_Db",                     transfer,          nullptr},
    {u"Hj_ReduceInventory_Db",                  transfer_back,     nullptr},
    {u"XFP_In_ReduceInventory",                 repaired_in_back,  nullptr},
    {u"XFP_In_AddInventory",                    repaired_in,       &repaired_new_row},
    {u"XFP_Out_ReduceInventory",                repaired_out,      nullptr},
    {u"XFP_Out_AddInventory",                   repaired_out_back, nullptr},
    {u"GoodsConvert_AddItems_ChangeInventory",  convert,           &conversion},
    {u"GoodsConvert_DelItems_ChangeInventory",  convert_back,      &conversion},
    {u"SaleIn_AddInventory",                    sales_return,      &magnitude_always},
    {u"SaleIn_ReduceInventory",                 sales_return_back, &magnitude_always},
    {u"BorrowOut_AddInventory",                 lent_back,         nullptr},
    {u"BorrowOut_ReduceInventory",              lent,              nullptr},
    {u"BorrowIn_AddInventory",                  borrowed,          nullptr},
    {u"BorrowIn_ReduceInventory",               borrowed_back,     nullptr},
    {u"AddInventory_ZZD_ZJ",                    parts_out_back,    &silent_components},
    {u"AddInventory_ZZD_MJ",                    item_in,           &silent_main_item},
    {u"ReduceInventory_ZZD_ZJ",                 parts_out,         &silent_components},
    {u"ReduceInventory_ZZD_MJ",                 item_in_back,      &silent_main_item},
    {u"AddInventory_CXD_ZJ",                    parts_in,          &silent_components},
    {u"AddInventory_CXD_MJ",                    item_out_back,     &received_from_issued},
    {u"ReduceInventory_CXD_ZJ",                 parts_in_back,     &silent_components},
    {u"ReduceInventory_CXD_MJ",                 item_out,          &silent_main_item},
};
static_assert(std::size(guides) == 40);

// clang-format on

}  // namespace

std::span<const MemberGuide> member_guides() { return guides; }

Signs signs_of(Move move) {
    switch (move) {
        case Move::receipt: return {+1, 0, +1};
        case Move::issue: return {0, +1, -1};
        case Move::receipt_back: return {-1, 0, -1};
        case Move::issue_back: return {0, -1, +1};
        case Move::issue_back_lowering: break;
    }
    return {0, -1, -1};
}

}  // namespace vantlo
