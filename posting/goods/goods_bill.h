#pragma once

#include <cstdint>

#include "posting/ledger.h"
#include "posting/posting_frame.h"

namespace vantlo::posting {

/// Posts every component row of a goods bill: updates move the raw Actualqty, inserts the base quantity.
void post_components(PostingFrame& frame, const Text& bill_id, const Movement& movement);

/// Posts the main item in a goods bill's first header row: its raw Actualqty, in update and insert alike.
/// Returns  0, or header_missing.
std::int32_t post_main_item(PostingFrame& frame, const Text& bill_id, const Movement& movement);

}  // namespace vantlo::posting
