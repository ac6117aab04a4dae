#include "posting/repair/repair.h"
#include "posting/repair/two_warehouses.h"

namespace vantlo::posting {

namespace {

constexpr TwoWarehouses transfer_bill{1, movement::issue_back, LookupVariable::prepared_and_released};

}  // namespace

void Hj_AddInventory_Db(Connection* connection, Line& objBillItems, const Text& Receiver, const Text& Supplier) {
    move_between(connection, objBillItems, Receiver, Supplier, transfer_bill);
}

void Hj_ReduceInventory_Db(Connection* connection, const Text& cId) {
    take_back_between(connection, cId, transfer_bill);
}

}  // namespace vantlo::posting
