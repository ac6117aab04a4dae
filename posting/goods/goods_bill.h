#pragma once

#include <cstdint>

#include "ado/connection.h"
#include "posting/ledger.h"

namespace vantlo::posting {

/// Posts every component row of a goods bill: updates move its raw Actualqty, inserts its base quantity.
void post_components(Connection* connection, const Text& bill_id, const Movement& movement);

/// Posts the main item in a goods bill's first header row: its raw Actualqty, in update and insert alike.
/// Returns  0, or header_missing.
std::int32_t post_main_item(Connection* connection, const Text& bill_id, const Movement& movement);

}  // namespace vantlo::posting
