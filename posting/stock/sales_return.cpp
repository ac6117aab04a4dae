#include "posting/ledger.h"
#include "posting/quantity.h"
#include "posting/stock/stock.h"

namespace vantlo::posting {

namespace {

constexpr StatementStyle sales_return{.status_in_lookup = StatusForm::literal, .status_in_update = StatusForm::literal};

const Source receiver = Source::of_line(u"Receiver");
const Source line_status = Source::of_line(u"Goodstutas");

}  // namespace

void SaleIn_AddInventory(PostingFrame& frame, Line& objBillItems) {
    post_one_line(frame, [&] {
        const Currency quantity = base_quantity(objBillItems, u"Actualqty", quantity_rule::line_in_hand_magnitude);
        post(frame, objBillItems, sales_return, side(movement::receipt, receiver, line_status, quantity));
    });
}

void SaleIn_ReduceInventory(PostingFrame& frame, const Text& cId) {
    const Statement select = select_by_id(u"select * from StockBillItems where BillId=", cId);
    post_stored_lines(frame, select, [&](Line& line) {
        const Currency quantity = base_quantity(line, u"Actualqty", quantity_rule::stored_line_magnitude);
        post(frame, line, sales_return, side(movement::receipt_back, receiver, line_status, quantity));
    });
}

}  // namespace vantlo::posting
