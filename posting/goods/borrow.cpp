#include "posting/goods/goods.h"
#include "posting/ledger.h"
#include "posting/quantity.h"

namespace vantlo::posting {

namespace {

constexpr StatementStyle borrow_line{.status_in_lookup = StatusForm::literal,
                                     .status_in_update = StatusForm::literal,
                                     .lookup_close = LookupClose::before_write};

/// Posts one movement to the row of the warehouse in `warehouse_column` and the line's own status.
void post_borrowed(PostingFrame& frame, Line& line, const Movement& movement, TextView warehouse_column) {
    const Currency quantity = base_quantity(line, u"UQty", quantity_rule::read_last);
    post(frame, line, borrow_line,
         side(movement, Source::of_line(warehouse_column), Source::of_line(u"Goodstutas"), quantity));
}

void post_borrow_line(PostingFrame& frame, Line& line, const Movement& movement, TextView warehouse_column) {
    post_one_line(frame, [&] { post_borrowed(frame, line, movement, warehouse_column); });
}

void post_borrow_bill(PostingFrame& frame, const Text& bill_id, const Movement& movement, TextView warehouse_column) {
    const Statement select = select_by_id(u"select * from GBorrowItems where BillId=", bill_id);
    const auto post_line = [&](Line& line) { post_borrowed(frame, line, movement, warehouse_column); };
    post_stored_lines(frame, select, post_line, LinesBy::execute, LookupVariable::neither);
}

}  // namespace

void BorrowOut_AddInventory(PostingFrame& frame, Line& objBillItems) {
    post_borrow_line(frame, objBillItems, movement::issue_back, u"Supplier");
}

void BorrowOut_ReduceInventory(PostingFrame& frame, const Text& cId) {
    post_borrow_bill(frame, cId, movement::issue, u"Supplier");
}

void BorrowIn_AddInventory(PostingFrame& frame, Line& objBillItems) {
    post_borrow_line(frame, objBillItems, movement::receipt, u"Receiver");
}

void BorrowIn_ReduceInventory(PostingFrame& frame, const Text& cId) {
    post_borrow_bill(frame, cId, movement::receipt_back, u"Receiver");
}

}  // namespace vantlo::posting
