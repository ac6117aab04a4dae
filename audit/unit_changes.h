#pragma once

#include "audit/verification.h"

namespace vantlo {

/// Turns edited bills into changed units: where one other factor of a unit explains, exactly, what was moved by each bill
/// that has lines in this unit of these goods and moved something else than it says.
void find_unit_changes(NativeConnection& database, Verification& verification, Language language);

}  // namespace vantlo
