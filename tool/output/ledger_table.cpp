#include "tool/output/ledger_table.h"

#include "tool/output/table_output.h"
#include "tool/output/words.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message total_of_rows  = {"合计 {} 行", "Total of {:row|rows}"};
// clang-format on

}  // namespace words

std::string named(const Text& id, const Text& name) { return to_utf8(name.empty() ? id : id + u" " + name); }

std::string ledger_table(const std::vector<LedgerRow>& rows, Language language, bool has_colour) {
    constexpr auto right = TableOutput::Align::right;
    TableOutput table({{words::warehouse.in(language)},
                       {words::goods.in(language)},
                       {words::model1.in(language)},
                       {words::model2.in(language)},
                       {words::status.in(language), right},
                       {words::received.in(language), right},
                       {words::issued.in(language), right},
                       {words::on_hand.in(language), right}},
                      has_colour);
    std::int64_t received = 0, issued = 0, on_hand = 0;
    for (const LedgerRow& row : rows) {
        table.add_row({named(row.warehouse, row.warehouse_name), named(row.goods, row.goods_name), to_utf8(row.model1),
                       to_utf8(row.model2), to_utf8(row.status), quantity_text(row.received), quantity_text(row.issued),
                       quantity_text(row.on_hand)});
        received += row.received.ten_thousandths();
        issued += row.issued.ten_thousandths();
        on_hand += row.on_hand.ten_thousandths();
    }
    const auto total = [](std::int64_t sum) { return quantity_text(Currency::from_ten_thousandths(sum)); };
    table.add_totals({say(language, words::total_of_rows, Count(rows.size())), "", "", "", "", total(received),
                      total(issued), total(on_hand)});
    return table.text();
}

}  // namespace vantlo
