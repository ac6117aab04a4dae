#include "posting/course.h"
#include "posting/ledger.h"
#include "posting/quantity.h"
#include "posting/stock/stock.h"

namespace vantlo::posting {

namespace {

constexpr Wording difference_line{};
constexpr Wording stored_difference{.lookup_close = LookupClose::by_caller};

const Source warehouse = Source::of_line(u"WarehouseId");
const Source receiver = Source::of_line(u"Receiver");
const Source supplier = Source::of_line(u"Supplier");

void post_difference(Connection* connection, Line& line, const Movement& movement, std::int16_t status) {
    post_one_line([&](RecordsetVariable& lookup) {
        const Currency quantity = quantity_times_factor(line, u"Actualqty");
        post(connection, lookup, line, difference_line, side(movement, warehouse, Source::given(status), quantity));
    });
}

void take_difference_back(Connection* connection, const Text& bill_id, const Movement& movement,
                          const Source& warehouse_column) {
    std::int16_t status = 0;  // and it stays so for a bill without a header
    RecordsetVariable rows;
    RecordsetVariable lookup;
    Open_Recordset(rows);
    Open_Recordset(lookup);
    rows = execute(connection, select_by_id(u"select * from StockBill where Id=", bill_id));
    if (!rows->eof()) status = to_integer(rows->field(u"ReferFlag"));
    rows->close();
    rows = execute(connection, select_by_id(u"select * from StockBillItems where BillId=", bill_id));
    while (!rows->eof()) {
        StoredLine line(*rows);
        const Currency quantity = stored_quantity_times_factor(line, u"Actualqty");
        post(connection, lookup, line, stored_difference,
             side(movement, warehouse_column, Source::given(status), quantity));
        rows->move_next();  // before the look-up is closed: this family alone has it in this order
        lookup->close();
    }
    rows->close();
    Close_Recordset(rows);
    Close_Recordset(lookup);
}

}  // namespace

void Loss_ReduceInventory(Connection* connection, Line& objBillItems, std::int16_t iGoodsStatus) {
    post_difference(connection, objBillItems, movement::issue, iGoodsStatus);
}

void Loss_AddInventory(Connection* connection, const Text& cId) {
    take_difference_back(connection, cId, movement::issue_back, supplier);
}

void Over_AddInventory(Connection* connection, Line& objBillItems, std::int16_t iGoodsStatus) {
    post_difference(connection, objBillItems, movement::receipt, iGoodsStatus);
}

void Over_ReduceInventory(Connection* connection, const Text& cId) {
    take_difference_back(connection, cId, movement::receipt_back, receiver);
}

}  // namespace vantlo::posting
