#include "posting/course.h"
#include "posting/ledger.h"
#include "posting/quantity.h"
#include "posting/stock/stock.h"

namespace vantlo::posting {

namespace {

constexpr Wording sales_return{.status_in_lookup = StatusForm::literal, .status_in_update = StatusForm::literal};

const Source receiver = Source::of_line(u"Receiver");
const Source line_status = Source::of_line(u"Goodstutas");

}  // namespace

void SaleIn_AddInventory(Connection* connection, Line& objBillItems) {
    post_one_line([&](RecordsetVariable& lookup) {
        const Currency quantity = magnitude_times_factor(objBillItems, u"Actualqty");
        post(connection, lookup, objBillItems, sales_return, side(movement::receipt, receiver, line_status, quantity));
    });
}

void SaleIn_ReduceInventory(Connection* connection, const Text& cId) {
    const Statement select = select_by_id(u"select * from StockBillItems where BillId=", cId);
    post_stored_lines(connection, select, [&](Line& line, RecordsetVariable& lookup) {
        const Currency quantity = stored_magnitude_times_factor(line, u"Actualqty");
        post(connection, lookup, line, sales_return, side(movement::receipt_back, receiver, line_status, quantity));
    });
}

}  // namespace vantlo::posting
