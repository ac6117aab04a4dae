#include "posting/repair/one_warehouse.h"

#include "posting/course.h"
#include "posting/quantity.h"

namespace vantlo::posting {

void post_to_warehouse(Connection* connection, Line& line, const OneWarehouse& member) {
    const Wording wording{.status_in_lookup = member.status_in_lookup,
                          .status_in_update = member.status_in_update,
                          .remarks_column = u"SpRemarks",
                          .lookup_by = member.lookup_by,
                          .lookup_close = member.lookup_close};
    const Source warehouse = Source::of_line(member.warehouse_column);
    const Source status =
        member.status_column.empty() ? Source::given(std::int16_t{1}) : Source::of_line(member.status_column);
    post_one_line([&](RecordsetVariable& lookup) {
        const Currency quantity = factor_times_quantity(line, u"Qty");
        post(connection, lookup, line, wording, side(member.movement, warehouse, status, quantity));
    });
}

}  // namespace vantlo::posting
