#pragma once

#include <string>
#include <vector>

#include "automation/error_text.h"
#include "bills/ledger_row.h"

namespace vantlo {

/// An id with the name that goes with it, in UTF-8.
std::string named(const Text& id, const Text& name);

/// The rows as a table for people, with the totals of the three quantities.
std::string ledger_table(const std::vector<LedgerRow>& rows, Language language, bool has_colour = false);

}  // namespace vantlo
