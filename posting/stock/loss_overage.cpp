#include "posting/ledger.h"
#include "posting/quantity.h"
#include "posting/stock/stock.h"

namespace vantlo::posting {

namespace {

constexpr StatementStyle difference_line{};
constexpr StatementStyle stored_difference{.lookup_close = LookupClose::by_caller};

const Source warehouse = Source::of_line(u"WarehouseId");
const Source receiver = Source::of_line(u"Receiver");
const Source supplier = Source::of_line(u"Supplier");

void post_difference(PostingFrame& frame, Line& line, const Movement& movement, std::int16_t status) {
    post_one_line(frame, [&] {
        const Currency quantity = base_quantity(line, u"Actualqty", quantity_rule::line_in_hand);
        post(frame, line, difference_line, side(movement, warehouse, Source::given(status), quantity));
    });
}

void take_difference_back(PostingFrame& frame, const Text& bill_id, const Movement& movement,
                          const Source& warehouse_column) {
    std::int16_t status = 0;  // kept if the bill has no header
    Open_Recordset(frame.lines);
    Open_Recordset(frame.lookup);
    frame.lines = frame.execute(select_by_id(u"select * from StockBill where Id=", bill_id));
    if (!frame.lines->eof()) status = to_integer(frame.lines->field(u"ReferFlag"));
    frame.lines->close();
    frame.lines = frame.execute(select_by_id(u"select * from StockBillItems where BillId=", bill_id));
    while (!frame.lines->eof()) {
        StoredLine line(*frame.lines);
        const Currency quantity = base_quantity(line, u"Actualqty", quantity_rule::stored_line);
        post(frame, line, stored_difference, side(movement, warehouse_column, Source::given(status), quantity));
        frame.lines->move_next();  // before the look-up is closed, in this family alone
        frame.lookup->close();
    }
    frame.lines->close();
    Close_Recordset(frame.lines);
    Close_Recordset(frame.lookup);
}

}  // namespace

void Loss_ReduceInventory(PostingFrame& frame, Line& objBillItems, std::int16_t iGoodsStatus) {
    post_difference(frame, objBillItems, movement::issue, iGoodsStatus);
}

void Loss_AddInventory(PostingFrame& frame, const Text& cId) {
    take_difference_back(frame, cId, movement::issue_back, supplier);
}

void Over_AddInventory(PostingFrame& frame, Line& objBillItems, std::int16_t iGoodsStatus) {
    post_difference(frame, objBillItems, movement::receipt, iGoodsStatus);
}

void Over_ReduceInventory(PostingFrame& frame, const Text& cId) {
    take_difference_back(frame, cId, movement::receipt_back, receiver);
}

}  // namespace vantlo::posting
