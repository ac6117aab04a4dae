#include "posting/repair/two_warehouses.h"

#include "posting/quantity.h"

namespace vantlo::posting {

namespace {

constexpr StatementStyle bill_line{.remarks_column = u"SpRemarks"};

}  // namespace

void move_between(PostingFrame& frame, Line& line, const Text& receiver, const Text& supplier,
                  const TwoWarehouses& kind) {
    const Source status = Source::given(kind.status);
    post_one_line(frame, [&] {
        const Currency quantity = base_quantity(line, u"Qty", quantity_rule::converted_last);
        post(frame, line, bill_line, side(movement::receipt, Source::given(receiver), status, quantity));
        post(frame, line, bill_line, side(movement::issue, Source::given(supplier), status, quantity));
    });
}

void take_back_between(PostingFrame& frame, const Text& bill_id, const TwoWarehouses& kind) {
    const Source status = Source::given(kind.status);
    const Statement select = select_by_id(
        u"select RGstockBillItems.*,RGstockBill.Receiver,RGstockBill.Supplier from RGstockBillItems "
        u"left join RGstockBill on RGstockBillItems.billid = RGstockBill.id where BillId=",
        bill_id);
    const auto take_back = [&](Line& line) {
        const Currency quantity = base_quantity(line, u"Qty", quantity_rule::read_last);
        post(frame, line, bill_line, side(movement::receipt_back, Source::of_line(u"Receiver"), status, quantity));
        post(frame, line, bill_line, side(kind.supplier_back, Source::of_line(u"Supplier"), status, quantity));
    };
    post_stored_lines(frame, select, take_back, LinesBy::execute, kind.lookup_variable);
}

}  // namespace vantlo::posting
