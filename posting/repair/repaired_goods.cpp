#include "posting/quantity.h"
#include "posting/repair/one_warehouse.h"
#include "posting/repair/repair.h"

namespace vantlo::posting {

namespace {

constexpr auto unquoted = StatusForm::unquoted;
constexpr auto literal = StatusForm::literal;

// clang-format off
//                                   movement                warehouse  status           look-up   update    look-up by         closed
constexpr OneWarehouse in_reduce  = {movement::receipt_back, u"WID",    u"GoodsStatus",  unquoted, unquoted};
constexpr OneWarehouse out_reduce = {movement::issue,        u"WID",    u"GoodsStatus",  literal,  literal};
constexpr OneWarehouse out_add    = {movement::issue_back,   u"WID",    u"GoodsStatus",  literal,  literal,  LookupBy::execute, LookupClose::by_caller};
// clang-format on

constexpr StatementStyle counted_receipt{.remarks_column = u"SpRemarks"};

const Source warehouse = Source::of_line(u"WID");
const Source line_status = Source::of_line(u"GoodsStatus");
const Source quantity_as_it_stands = Source::of_line(u"Qty");

/// The number of ledger rows with the line's key.
std::int32_t counted_rows(PostingFrame& frame, const Statement& count) {
    frame.lookup = frame.execute(count);
    const std::int32_t counted = frame.lookup->eof() ? 0 : to_long(frame.lookup->field(u"TempQty"));
    frame.lookup->close();
    return counted;
}

}  // namespace

void XFP_In_ReduceInventory(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, in_reduce);
}

void XFP_In_AddInventory(PostingFrame& frame, Line& rgsStockItemObj) {
    const Currency quantity = base_quantity(rgsStockItemObj, u"Qty", quantity_rule::converted_last);
    const Side receipt{movement::receipt, warehouse, line_status, Source::given(quantity), quantity_as_it_stands};
    // The key is read before the recordset is prepared, in this member alone.
    Statement count = Statement().piece(ledger_head::count);
    append_key(count, rgsStockItemObj, warehouse, line_status, StatusForm::literal);
    post_one_line(frame, [&] {
        if (counted_rows(frame, count) == 0) {
            frame.execute(insert_statement(rgsStockItemObj, counted_receipt, receipt, u"values( "));
        } else {
            frame.execute(update_statement(rgsStockItemObj, counted_receipt, receipt));
        }
    });
}

void XFP_Out_ReduceInventory(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, out_reduce);
}

/// Closes its look-up in the release routine, which ignores errors.
void XFP_Out_AddInventory(PostingFrame& frame, Line& rgsStockItemObj) {
    post_to_warehouse(frame, rgsStockItemObj, out_add);
}

}  // namespace vantlo::posting
