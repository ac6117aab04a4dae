#include "posting/ledger.h"
#include "posting/quantity.h"
#include "posting/stock/stock.h"

namespace vantlo::posting {

namespace {

constexpr StatementStyle stock_out{};

const Source supplier = Source::of_line(u"Supplier");

/// The product, or its magnitude if bUseAbs is exactly True (-1).
Currency issued(Currency product, VariantBool bUseAbs) {
    return bUseAbs == VariantBool::exactly_true ? absolute(product) : product;
}

}  // namespace

void Out_ReduceInventory(PostingFrame& frame, Line& objBillItems, VariantBool bUseAbs, std::int16_t iCPZT) {
    post_one_line(frame, [&] {
        const Currency quantity =
            issued(base_quantity(objBillItems, u"Actualqty", quantity_rule::line_in_hand), bUseAbs);
        post(frame, objBillItems, stock_out, side(movement::issue, supplier, Source::given(iCPZT), quantity));
    });
}

void Out_AddInventory(PostingFrame& frame, const Text& cId, VariantBool bUseAbs, std::int16_t iCPZT) {
    const Statement select = select_by_id(u"select * from StockBillItems where BillId=", cId);
    const auto take_back = [&](Line& line) {
        const Currency quantity = issued(base_quantity(line, u"Actualqty", quantity_rule::stored_line), bUseAbs);
        post(frame, line, stock_out, side(movement::issue_back, supplier, Source::given(iCPZT), quantity));
    };
    // Unlike the other members, it opens its lines by the recordset's own Open, on the project-wide connection.
    post_stored_lines(frame, select, take_back, LinesBy::open);
}

}  // namespace vantlo::posting
