#pragma once

#include "audit/movements.h"
#include "automation/error_text.h"

namespace vantlo {

/// Whether every stored bill was either entered into the history or is named by movements. If not, a host posts bills
/// without saying so, and a movement that names no bill may be one of theirs.
bool are_all_bills_named(const BillTimeline& timeline, const Movements& movements);

/// Leaves out what was done before the journal's opening, whose entries stand for it.
///
/// What the history knows is told by its time; of the opening's own second, only bills that movements name take part. Of
/// stored bills that neither history nor movements know, those dated after the opening's day take part, and those whose
/// posting is among the movements without a bill, step for step.
void leave_out_before_opening(BillTimeline& timeline, const Movements& movements, NativeConnection& database,
                              Language language);

}  // namespace vantlo
