#pragma once

#include "posting/ledger.h"
#include "posting/posting_frame.h"

namespace vantlo::posting {

/// The differences between the members that post one line of a return and repair document to one warehouse.
struct OneWarehouse {
    Movement movement;
    TextView warehouse_column;
    TextView status_column;  ///< empty: status 1, whatever the line says
    StatusForm status_in_lookup;
    StatusForm status_in_update;
    LookupBy lookup_by = LookupBy::execute;
    LookupClose lookup_close = LookupClose::after_write;
};

/// Posts one line: base quantity = factor × CCur(Qty), one movement of one ledger row.
void post_to_warehouse(PostingFrame& frame, Line& line, const OneWarehouse& member);

}  // namespace vantlo::posting
