#pragma once

#include "automation/error.h"
#include "tool/commands/command.h"

namespace vantlo {

/// What a failure of the database means to a user, and what he can do: which file, table or field is not there, who holds a
/// lock. Whatever else a database says stands in its own words behind what it means. `creates` says whether a missing file was
/// to be made.
std::string failure_text(const Failure& failure, const CommonOptions& common, bool creates);

}  // namespace vantlo
