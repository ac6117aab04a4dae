#include "posting/course.h"
#include "posting/quantity.h"
#include "posting/repair/one_warehouse.h"
#include "posting/repair/repair.h"

namespace vantlo::posting {

namespace {

constexpr auto digits = StatusForm::digits;
constexpr auto literal = StatusForm::literal;

// clang-format off
//                                   movement                warehouse  status           look-up  update   look-up by          closed
constexpr OneWarehouse in_reduce  = {movement::receipt_back, u"WID",    u"GoodsStatus",  digits,  digits};
constexpr OneWarehouse out_reduce = {movement::issue,        u"WID",    u"GoodsStatus",  literal, literal};
constexpr OneWarehouse out_add    = {movement::issue_back,   u"WID",    u"GoodsStatus",  literal, literal, LookupBy::execute,  LookupClose::by_caller};
// clang-format on

constexpr Wording counted_receipt{.remarks_column = u"SpRemarks"};

const Source warehouse = Source::of_line(u"WID");
const Source line_status = Source::of_line(u"GoodsStatus");
const Source quantity_as_it_stands = Source::of_line(u"Qty");

/// How many ledger rows carry the line's key.
std::int32_t counted_rows(Connection* connection, RecordsetVariable& rows, const Statement& count) {
    rows = execute(connection, count);
    const std::int32_t counted = rows->eof() ? 0 : to_long(rows->field(u"TempQty"));
    rows->close();
    return counted;
}

}  // namespace

void XFP_In_ReduceInventory(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, in_reduce);
}

void XFP_In_AddInventory(Connection* connection, Line& rgsStockItemObj) {
    const Currency quantity = factor_times_quantity(rgsStockItemObj, u"Qty");
    const Side receipt{movement::receipt, warehouse, line_status, Source::given(quantity), quantity_as_it_stands};
    // The recordset is prepared after the key has been read, not before as everywhere else.
    Statement count = Statement().piece(u"Select Count(*) as TempQty from Inventory ");
    append_key(count, rgsStockItemObj, warehouse, line_status, StatusForm::literal);
    post_one_line([&](RecordsetVariable& rows) {
        if (counted_rows(connection, rows, count) == 0) {
            execute(connection, insert_statement(rgsStockItemObj, counted_receipt, receipt, u"values( "));
        } else {
            execute(connection, update_statement(rgsStockItemObj, counted_receipt, receipt));
        }
    });
}

void XFP_Out_ReduceInventory(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, out_reduce);
}

/// Leaves its look-up to the release routine to close, where a failure to close goes unnoticed.
void XFP_Out_AddInventory(Connection* connection, Line& rgsStockItemObj) {
    post_to_warehouse(connection, rgsStockItemObj, out_add);
}

}  // namespace vantlo::posting
