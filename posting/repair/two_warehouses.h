#pragma once

#include "posting/ledger.h"
#include "posting/posting_frame.h"

namespace vantlo::posting {

/// The differences between the two kinds of bill that move goods between the warehouses of an RGstockBill.
struct TwoWarehouses {
    std::int16_t status;             ///< the goods status of both sides, whatever the line says
    Movement supplier_back;          ///< the movement that takes back the supplying side
    LookupVariable lookup_variable;  ///< of a take-back
};

/// Posts one line: the receiving side first, then the supplying side.
void move_between(PostingFrame& frame, Line& line, const Text& receiver, const Text& supplier,
                  const TwoWarehouses& kind);

/// Takes back every line of a stored bill: the receiving side first, then the supplying side.
void take_back_between(PostingFrame& frame, const Text& bill_id, const TwoWarehouses& kind);

}  // namespace vantlo::posting
