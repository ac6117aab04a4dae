#include "posting/course.h"
#include "posting/ledger.h"
#include "posting/quantity.h"
#include "posting/stock/stock.h"

namespace vantlo::posting {

namespace {

constexpr Wording stock_out{};

const Source supplier = Source::of_line(u"Supplier");

/// The product, or its magnitude where the caller asks for it with exactly True; any other value does not ask.
Currency issued(Currency product, VariantBool bUseAbs) {
    return bUseAbs == VariantBool::exactly_true ? absolute(product) : product;
}

}  // namespace

void Out_ReduceInventory(Connection* connection, Line& objBillItems, VariantBool bUseAbs, std::int16_t iCPZT) {
    post_one_line([&](RecordsetVariable& lookup) {
        const Currency quantity = issued(quantity_times_factor(objBillItems, u"Actualqty"), bUseAbs);
        post(connection, lookup, objBillItems, stock_out,
             side(movement::issue, supplier, Source::given(iCPZT), quantity));
    });
}

void Out_AddInventory(Connection* connection, const Text& cId, VariantBool bUseAbs, std::int16_t iCPZT) {
    const Statement select = select_by_id(u"select * from StockBillItems where BillId=", cId);
    const auto take_back = [&](Line& line, RecordsetVariable& lookup) {
        const Currency quantity = issued(stored_quantity_times_factor(line, u"Actualqty"), bUseAbs);
        post(connection, lookup, line, stock_out, side(movement::issue_back, supplier, Source::given(iCPZT), quantity));
    };
    // Opened by the recordset itself, on the project-wide connection, unlike every other bill of this folder.
    post_stored_lines(connection, select, take_back, LinesBy::open);
}

}  // namespace vantlo::posting
