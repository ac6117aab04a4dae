#pragma once

#include <string>
#include <vector>

#include "ado/native/native_connection.h"

namespace vantlo {

/// What stands in the way of keeping a journal in a database that a host has used, beside the conditions of its ledger
/// (ledger_conditions.h).
enum class AdoptionFinding {
    no_triggers,    ///< the engine has none; no subject
    quantity_type,  ///< a quantity that a movement cannot hold exactly; subject: column and type
    key_type,       ///< a key column that a movement cannot hold; subject: column and type
};

struct AdoptionNote {
    AdoptionFinding finding;
    std::string subject;
};

/// Looks at the ledger that is there; changes nothing. The order is that of the enumeration. Errors   Failure.
std::vector<AdoptionNote> look_before_adopting(NativeConnection& database);

}  // namespace vantlo
