#include "posting/repair/repair.h"
#include "posting/repair/two_warehouses.h"

namespace vantlo::posting {

namespace {

/// If the supplying warehouse has no row, the take-back inserts one with CurrentQty lowered, although it raises the
/// CurrentQty of a row that exists. Hosts rely on it.
constexpr Movement issue_back_lowering_new_rows = {u"OutQty = OutQty - ", u",CurrentQty = CurrentQty + ", 0, -1, -1};

/// The look-up variable is not passed to the release routine.
constexpr TwoWarehouses return_repair_bill{2, issue_back_lowering_new_rows, LookupVariable::prepared_only};

}  // namespace

void RG_AddInventory_Db(PostingFrame& frame, Line& objBillItems, const Text& Receiver, const Text& Supplier) {
    move_between(frame, objBillItems, Receiver, Supplier, return_repair_bill);
}

void RG_ReduceInventory_Db(PostingFrame& frame, const Text& cId) { take_back_between(frame, cId, return_repair_bill); }

}  // namespace vantlo::posting
