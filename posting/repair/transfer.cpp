#include "posting/repair/repair.h"
#include "posting/repair/two_warehouses.h"

namespace vantlo::posting {

namespace {

constexpr TwoWarehouses transfer_bill{1, movement::issue_back, LookupVariable::prepared_and_released};

}  // namespace

void Hj_AddInventory_Db(PostingFrame& frame, Line& objBillItems, const Text& Receiver, const Text& Supplier) {
    move_between(frame, objBillItems, Receiver, Supplier, transfer_bill);
}

void Hj_ReduceInventory_Db(PostingFrame& frame, const Text& cId) { take_back_between(frame, cId, transfer_bill); }

}  // namespace vantlo::posting
