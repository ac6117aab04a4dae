#include "posting/goods/goods_bill.h"

#include "posting/goods/goods.h"
#include "posting/quantity.h"

namespace vantlo::posting {

namespace {

constexpr StatementStyle goods_bill{.status_in_lookup = StatusForm::literal,
                                    .status_in_update = StatusForm::literal,
                                    .lookup_close = LookupClose::before_write};

const Source warehouse = Source::of_line(u"WareHouseID");
const Source line_status = Source::of_line(u"Goodstutas");
const Source raw_quantity = Source::of_line(u"Actualqty");

}  // namespace

// Unlike the other families, these neither prepare their recordsets nor pass them to the release routine.

void post_components(PostingFrame& frame, const Text& bill_id, const Movement& movement) {
    frame.lines = frame.execute(select_by_id(u"select * from GoodsBillItems where BillId=", bill_id));
    for_each_line(frame, [&](Line& line) {
        const Currency quantity = base_quantity(line, u"Actualqty", quantity_rule::converted_last);
        post(frame, line, goods_bill, Side{movement, warehouse, line_status, raw_quantity, Source::given(quantity)});
    });
    frame.lines->close();
}

std::int32_t post_main_item(PostingFrame& frame, const Text& bill_id, const Movement& movement) {
    frame.lines = frame.execute(select_by_id(u"select * from GoodsBill where Id=", bill_id));
    if (frame.lines->eof()) return header_missing;
    StoredLine line(*frame.lines);
    const Statement write =
        build_write(frame, line, goods_bill, Side{movement, warehouse, line_status, raw_quantity, raw_quantity});
    frame.lines->close();
    frame.lookup->close();
    frame.execute(write);
    return 0;
}

}  // namespace vantlo::posting
