#pragma once

#include "ado/connection.h"
#include "posting/course.h"
#include "posting/ledger.h"

namespace vantlo::posting {

/// What distinguishes the two kinds of bill that move goods between the warehouses of an RGstockBill.
struct TwoWarehouses {
    std::int16_t status;             ///< the goods status of both sides, whatever the line says
    Movement supplier_back;          ///< how the supplying side is taken back
    LookupVariable lookup_variable;  ///< what a take-back does with its look-up variable
};

/// Posts one line: the receiving side first, then the supplying side.
void move_between(Connection* connection, Line& line, const Text& receiver, const Text& supplier,
                  const TwoWarehouses& kind);

/// Takes back every line of a stored bill, each its receiving side first.
void take_back_between(Connection* connection, const Text& bill_id, const TwoWarehouses& kind);

}  // namespace vantlo::posting
