#include "posting/repair/repair.h"
#include "posting/repair/two_warehouses.h"

namespace vantlo::posting {

namespace {

/// Where the supplying warehouse has no row, the take-back inserts one with the stock on hand lowered, although a row
/// that exists gains: hosts rely on it.
constexpr Movement issue_back_lowering_new_rows = {u"OutQty = OutQty - ", u",CurrentQty = CurrentQty + ", 0, -1, -1};

/// The look-up's variable is not handed to the release routine.
constexpr TwoWarehouses return_repair_bill{2, issue_back_lowering_new_rows, LookupVariable::prepared_only};

}  // namespace

void RG_AddInventory_Db(Connection* connection, Line& objBillItems, const Text& Receiver, const Text& Supplier) {
    move_between(connection, objBillItems, Receiver, Supplier, return_repair_bill);
}

void RG_ReduceInventory_Db(Connection* connection, const Text& cId) {
    take_back_between(connection, cId, return_repair_bill);
}

}  // namespace vantlo::posting
