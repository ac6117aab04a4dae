#pragma once

#include <string>
#include <vector>

#include "audit/ledger_conditions.h"
#include "automation/error_text.h"

namespace vantlo {

/// A condition with what to do about it, in one line. Example: `Inventory has no column OutQty: add it`
std::string text_of(const LedgerCondition& condition, Language language);

/// All of them, a line each; empty if there are none.
std::string report_of(const std::vector<LedgerCondition>& conditions, Language language);

}  // namespace vantlo
