#include "posting/goods/goods.h"
#include "posting/ledger.h"

namespace vantlo::posting {

namespace {

/// The goods statuses that a quantity leaves and enters.
struct Conversion {
    std::int32_t kind;
    std::int32_t source;
    std::int32_t target;
};

// clang-format off
constexpr Conversion conversions[] = {
    //kind source target
    {1,    0,     1},
    {2,    0,     2},
    {3,    2,     0},
    {4,    2,     1},
    {5,    1,     2},
    {6,    1,     0},
};
// clang-format on

/// Any other kind stays in status 0.
Conversion conversion_of(std::int32_t kind) {
    for (const Conversion& conversion : conversions) {
        if (conversion.kind == kind) return conversion;
    }
    return {kind, 0, 0};
}

// The look-up has two blanks between "Inventory" and "where".
constexpr StatementStyle conversion_side{.lookup_head = u"select * from Inventory ", .update_overwrites_remarks = true};
constexpr StatementStyle conversion_last_side{.lookup_head = u"select * from Inventory ",
                                              .update_overwrites_remarks = true,
                                              .lookup_close = LookupClose::by_caller};

Side unconverted(const Movement& movement, TextView warehouse_column, std::int32_t status) {
    const Source quantity = Source::of_line(u"Qty");
    return {movement, Source::of_line(warehouse_column), Source::given(status), quantity, quantity};
}

}  // namespace

void GoodsConvert_AddItems_ChangeInventory(PostingFrame& frame, Line& objBillItem, std::int32_t enumConvertType) {
    post_one_line(frame, [&] {
        const Conversion conversion = conversion_of(enumConvertType);
        post(frame, objBillItem, conversion_side, unconverted(movement::issue, u"Supplier", conversion.source));
        post(frame, objBillItem, conversion_last_side, unconverted(movement::receipt, u"Receiver", conversion.target));
    });
}

void GoodsConvert_DelItems_ChangeInventory(PostingFrame& frame, const Text& cBillid) {
    Conversion conversion = conversion_of(0);  // kept if the bill has no header
    Open_Recordset(frame.lines);
    frame.lines = frame.execute(select_by_id(u"Select ReferFlag from StockBill where Id=", cBillid));
    if (!frame.lines->eof()) conversion = conversion_of(to_long(frame.lines->field(u"Referflag")));
    frame.lines = frame.execute(select_by_id(u"select * from StockBillItems where BillId=", cBillid));
    for_each_line(frame, [&](Line& line) {
        post(frame, line, conversion_side, unconverted(movement::issue_back, u"Supplier", conversion.source));
        post(frame, line, conversion_side, unconverted(movement::receipt_back, u"Receiver", conversion.target));
    });
    frame.lines->close();
    Close_Recordset(frame.lines);
}

}  // namespace vantlo::posting
