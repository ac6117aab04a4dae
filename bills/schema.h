#pragma once

#include <string>
#include <string_view>

namespace vantlo {

/// The script that makes the tables in a dialect of SQL, as in schema/DIALECT.sql; it is part of the program.
/// Errors   std::runtime_error for a dialect without one.
std::string schema_for(std::string_view dialect);

/// The script that adds the ledger's unique key, as in schema/DIALECT-unique.sql. Errors: as above.
std::string unique_key_for(std::string_view dialect);

}  // namespace vantlo
