#pragma once

#include <string>
#include <vector>

#include "audit/repair.h"
#include "audit/repair_undo.h"
#include "automation/error_text.h"

namespace vantlo {

/// The repairs as a script for the engine's own client, in a transaction, each with its cause as a comment.
std::string script_of(const std::vector<Repair>& repairs, const Dialect& dialect, Language language);

/// The same for what brings a repair back.
std::string script_of(const UndoPlan& undo, const Dialect& dialect);

}  // namespace vantlo
