#include "dataaccess/unit_conversion.h"
#include "posting/ledger.h"
#include "posting/quantity.h"
#include "posting/stock/stock.h"

namespace vantlo::posting {

namespace {

constexpr StatementStyle stock_bill{};

const Source receiver = Source::of_line(u"Receiver");
const Source supplier = Source::of_line(u"Supplier");
const Source ordinary_stock = Source::given(std::int16_t{0});

/// The factor times the quantity in double precision, rounded to Currency. Example: 0.00006 of a unit of 1000 is 0.06.
Currency base_quantity_rounded_once(Line& line) {
    const Text gid = to_text(line.value(u"Gid"));
    const Text unit = to_text(line.value(u"Unit"));
    const Currency factor = GoodsUnitConverter(gid, unit);
    const double quantity_line = to_double(line.value(u"Actualqty"));
    return Currency::from_double(factor.to_double() * quantity_line);
}

}  // namespace

void AddInventory_Db(PostingFrame& frame, Line& objBillItems) {
    post_one_line(frame, [&] {
        const Currency quantity = base_quantity_rounded_once(objBillItems);
        TextLine line(objBillItems);
        post(frame, line, stock_bill, side(movement::receipt, receiver, ordinary_stock, quantity));
        post(frame, line, stock_bill, side(movement::issue, supplier, ordinary_stock, quantity));
    });
}

void ReduceInventory_Db(PostingFrame& frame, const Text& cId) {
    const Statement select = select_by_id(u"select * from StockBillItems where BillId=", cId);
    post_stored_lines(frame, select, [&](Line& line) {
        // A null quantity fails its conversion, although it was meant to count as 0. Hosts rely on it.
        const Currency quantity = base_quantity(line, u"Actualqty", quantity_rule::read_last);
        post(frame, line, stock_bill, side(movement::receipt_back, receiver, ordinary_stock, quantity));
        post(frame, line, stock_bill, side(movement::issue_back, supplier, ordinary_stock, quantity));
    });
}

}  // namespace vantlo::posting
