#pragma once

#include <string>
#include <vector>

#include "audit/repair_undo.h"
#include "automation/error_text.h"

namespace vantlo {

/// Past repairs as a table; a sentence if there are none.
std::string report_of(const std::vector<PastRepair>& repairs, Language language);

/// Rows that others have moved since a repair: each as the repair left it and as it is, and who moved it last, if known.
std::string report_of(const std::vector<MovedRows>& moved, Language language);

}  // namespace vantlo
