#include "posting/ledger.h"
#include "posting/quantity.h"
#include "posting/stock/stock.h"

namespace vantlo::posting {

namespace {

constexpr StatementStyle stock_in{};
constexpr std::int16_t any_main_goods_flag = -1;  // 0 is a flag like any other

const Source receiver = Source::of_line(u"Receiver");

/// The condition on Goods, with a leading blank; empty if all lines are wanted.
Statement goods_filter(const Text& goods_class, std::int16_t main_goods_flag) {
    Statement filter;
    if (!goods_class.empty()) filter.piece(u" Goods.Class=").literal(goods_class);
    if (main_goods_flag != any_main_goods_flag) {
        filter.piece(filter.text().empty() ? u" Goods.GCZYCPFlag=" : u" and Goods.GCZYCPFlag=");
        filter.literal(main_goods_flag);
    }
    return filter;
}

Statement select_lines(const Text& bill_id, const Statement& filter) {
    Statement select;
    if (filter.text().empty()) return select.piece(u"select * from StockBillItems where BillId=").literal(bill_id);
    // There are two blanks before "where" and after the last "and".
    select.piece(u"select StockBillItems.* from StockBillItems left join Goods on StockBillItems.GID=Goods.ID ");
    select.piece(u" where BillId=").literal(bill_id);
    return select.piece(u" and ").piece(filter.text());
}

}  // namespace

void In_AddInventory(PostingFrame& frame, Line& objBillItems, std::int16_t iCPZT) {
    post_one_line(frame, [&] {
        const Currency quantity = base_quantity(objBillItems, u"Actualqty", quantity_rule::line_in_hand);
        post(frame, objBillItems, stock_in, side(movement::receipt, receiver, Source::given(iCPZT), quantity));
    });
}

void In_ReduceInventory(PostingFrame& frame, const Text& cId, const Text& sZLID, std::int16_t iZYCP,
                        std::int16_t iCPZT) {
    const Statement select = select_lines(cId, goods_filter(sZLID, iZYCP));
    post_stored_lines(frame, select, [&](Line& line) {
        const Currency quantity = base_quantity(line, u"Actualqty", quantity_rule::stored_line);
        post(frame, line, stock_in, side(movement::receipt_back, receiver, Source::given(iCPZT), quantity));
    });
}

}  // namespace vantlo::posting
