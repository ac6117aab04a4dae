#pragma once

#include <string>
#include <string_view>

namespace vantlo::host {

/// The script that makes the tables in a dialect of SQL, as in schema/DIALECT.sql; it is part of the program.
/// Errors   std::runtime_error for a dialect without one.
std::string schema_for(std::string_view dialect);

}  // namespace vantlo::host
