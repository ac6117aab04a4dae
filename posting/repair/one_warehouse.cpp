#include "posting/repair/one_warehouse.h"

#include "posting/quantity.h"

namespace vantlo::posting {

void post_to_warehouse(PostingFrame& frame, Line& line, const OneWarehouse& member) {
    const StatementStyle style{.status_in_lookup = member.status_in_lookup,
                               .status_in_update = member.status_in_update,
                               .remarks_column = u"SpRemarks",
                               .lookup_by = member.lookup_by,
                               .lookup_close = member.lookup_close};
    const Source warehouse = Source::of_line(member.warehouse_column);
    const Source status =
        member.status_column.empty() ? Source::given(std::int16_t{1}) : Source::of_line(member.status_column);
    post_one_line(frame, [&] {
        const Currency quantity = base_quantity(line, u"Qty", quantity_rule::converted_last);
        post(frame, line, style, side(member.movement, warehouse, status, quantity));
    });
}

}  // namespace vantlo::posting
