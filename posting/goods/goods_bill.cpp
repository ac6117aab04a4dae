#include "posting/goods/goods_bill.h"

#include "posting/goods/goods.h"
#include "posting/quantity.h"

namespace vantlo::posting {

namespace {

constexpr Wording goods_bill{.status_in_lookup = StatusForm::literal,
                             .status_in_update = StatusForm::literal,
                             .lookup_close = LookupClose::before_write};

const Source warehouse = Source::of_line(u"WareHouseID");
const Source line_status = Source::of_line(u"Goodstutas");
const Source raw_quantity = Source::of_line(u"Actualqty");

}  // namespace

// Neither prepares its recordsets nor hands them to the release routine, unlike every other family.

void post_components(Connection* connection, const Text& bill_id, const Movement& movement) {
    const RecordsetVariable lines =
        execute(connection, select_by_id(u"select * from GoodsBillItems where BillId=", bill_id));
    for_each_line(lines, [&](Line& line) {
        RecordsetVariable lookup;
        const Currency base_quantity = factor_times_quantity(line, u"Actualqty");
        post(connection, lookup, line, goods_bill,
             Side{movement, warehouse, line_status, raw_quantity, Source::given(base_quantity)});
    });
    lines->close();
}

std::int32_t post_main_item(Connection* connection, const Text& bill_id, const Movement& movement) {
    const RecordsetVariable header = execute(connection, select_by_id(u"select * from GoodsBill where Id=", bill_id));
    if (header->eof()) return header_missing;
    StoredLine line(*header);
    RecordsetVariable lookup;
    const Statement write = look_up_and_word(connection, lookup, line, goods_bill,
                                             Side{movement, warehouse, line_status, raw_quantity, raw_quantity});
    header->close();
    lookup->close();
    execute(connection, write);
    return 0;
}

}  // namespace vantlo::posting
