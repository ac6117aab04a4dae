#include "posting/repair/two_warehouses.h"

#include "posting/quantity.h"

namespace vantlo::posting {

namespace {

constexpr Wording bill_line{.remarks_column = u"SpRemarks"};

}  // namespace

void move_between(Connection* connection, Line& line, const Text& receiver, const Text& supplier,
                  const TwoWarehouses& kind) {
    const Source status = Source::given(kind.status);
    post_one_line([&](RecordsetVariable& lookup) {
        const Currency quantity = factor_times_quantity(line, u"Qty");
        post(connection, lookup, line, bill_line, side(movement::receipt, Source::given(receiver), status, quantity));
        post(connection, lookup, line, bill_line, side(movement::issue, Source::given(supplier), status, quantity));
    });
}

void take_back_between(Connection* connection, const Text& bill_id, const TwoWarehouses& kind) {
    const Source status = Source::given(kind.status);
    const Statement select = select_by_id(
        u"select RGstockBillItems.*,RGstockBill.Receiver,RGstockBill.Supplier from RGstockBillItems "
        u"left join RGstockBill on RGstockBillItems.billid = RGstockBill.id where BillId=",
        bill_id);
    const auto take_back = [&](Line& line, RecordsetVariable& lookup) {
        const Currency quantity = factor_times_quantity_read_last(line, u"Qty");
        post(connection, lookup, line, bill_line,
             side(movement::receipt_back, Source::of_line(u"Receiver"), status, quantity));
        post(connection, lookup, line, bill_line,
             side(kind.supplier_back, Source::of_line(u"Supplier"), status, quantity));
    };
    post_stored_lines(connection, select, take_back, LinesBy::execute, kind.lookup_variable);
}

}  // namespace vantlo::posting
