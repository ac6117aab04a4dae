#include "posting/course.h"
#include "posting/goods/goods.h"
#include "posting/ledger.h"
#include "posting/quantity.h"

namespace vantlo::posting {

namespace {

constexpr Wording borrow_line{.status_in_lookup = StatusForm::literal,
                              .status_in_update = StatusForm::literal,
                              .lookup_close = LookupClose::before_write};

/// One movement of one line: the row of the warehouse in `warehouse_column` under the line's own status.
void post_borrowed(Connection* connection, RecordsetVariable& lookup, Line& line, const Movement& movement,
                   TextView warehouse_column) {
    const Currency quantity = factor_times_quantity_read_last(line, u"UQty");
    post(connection, lookup, line, borrow_line,
         side(movement, Source::of_line(warehouse_column), Source::of_line(u"Goodstutas"), quantity));
}

void post_borrow_line(Connection* connection, Line& line, const Movement& movement, TextView warehouse_column) {
    post_one_line(
        [&](RecordsetVariable& lookup) { post_borrowed(connection, lookup, line, movement, warehouse_column); });
}

void post_borrow_bill(Connection* connection, const Text& bill_id, const Movement& movement,
                      TextView warehouse_column) {
    const Statement select = select_by_id(u"select * from GBorrowItems where BillId=", bill_id);
    const auto post_line = [&](Line& line, RecordsetVariable& lookup) {
        post_borrowed(connection, lookup, line, movement, warehouse_column);
    };
    post_stored_lines(connection, select, post_line, LinesBy::execute, LookupVariable::neither);
}

}  // namespace

void BorrowOut_AddInventory(Connection* connection, Line& objBillItems) {
    post_borrow_line(connection, objBillItems, movement::issue_back, u"Supplier");
}

void BorrowOut_ReduceInventory(Connection* connection, const Text& cId) {
    post_borrow_bill(connection, cId, movement::issue, u"Supplier");
}

void BorrowIn_AddInventory(Connection* connection, Line& objBillItems) {
    post_borrow_line(connection, objBillItems, movement::receipt, u"Receiver");
}

void BorrowIn_ReduceInventory(Connection* connection, const Text& cId) {
    post_borrow_bill(connection, cId, movement::receipt_back, u"Receiver");
}

}  // namespace vantlo::posting
