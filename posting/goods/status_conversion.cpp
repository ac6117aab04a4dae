#include "posting/course.h"
#include "posting/goods/goods.h"
#include "posting/ledger.h"

namespace vantlo::posting {

namespace {

/// The goods statuses between which a conversion moves a quantity.
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

/// Any other kind stays within ordinary stock.
Conversion conversion_of(std::int32_t kind) {
    for (const Conversion& conversion : conversions) {
        if (conversion.kind == kind) return conversion;
    }
    return {kind, 0, 0};
}

// Two blanks between "Inventory" and "where": the pieces meet so.
constexpr Wording conversion_side{.lookup_head = u"select * from Inventory ", .update_overwrites_remarks = true};
constexpr Wording conversion_last_side{.lookup_head = u"select * from Inventory ",
                                       .update_overwrites_remarks = true,
                                       .lookup_close = LookupClose::by_caller};

Side unconverted(const Movement& movement, TextView warehouse_column, std::int32_t status) {
    const Source quantity = Source::of_line(u"Qty");
    return {movement, Source::of_line(warehouse_column), Source::given(status), quantity, quantity};
}

}  // namespace

void GoodsConvert_AddItems_ChangeInventory(Connection* connection, Line& objBillItem, std::int32_t enumConvertType) {
    post_one_line([&](RecordsetVariable& lookup) {
        const Conversion conversion = conversion_of(enumConvertType);
        post(connection, lookup, objBillItem, conversion_side,
             unconverted(movement::issue, u"Supplier", conversion.source));
        post(connection, lookup, objBillItem, conversion_last_side,
             unconverted(movement::receipt, u"Receiver", conversion.target));
    });
}

void GoodsConvert_DelItems_ChangeInventory(Connection* connection, const Text& cBillid) {
    Conversion conversion = conversion_of(0);  // and it stays so for a bill without a header
    RecordsetVariable rows;
    RecordsetVariable lookup;
    Open_Recordset(rows);
    rows = execute(connection, select_by_id(u"Select ReferFlag from StockBill where Id=", cBillid));
    if (!rows->eof()) conversion = conversion_of(to_long(rows->field(u"Referflag")));
    rows = execute(connection, select_by_id(u"select * from StockBillItems where BillId=", cBillid));
    for_each_line(rows, [&](Line& line) {
        post(connection, lookup, line, conversion_side,
             unconverted(movement::issue_back, u"Supplier", conversion.source));
        post(connection, lookup, line, conversion_side,
             unconverted(movement::receipt_back, u"Receiver", conversion.target));
    });
    rows->close();
    Close_Recordset(rows);
}

}  // namespace vantlo::posting
