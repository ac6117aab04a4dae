#pragma once

#include <string>
#include <vector>

#include "ado/native/native_connection.h"

namespace vantlo {

/// What stands in the way of keeping a journal in a database that a host has used, or is worth knowing before.
enum class AdoptionFinding {
    // These are refused.
    no_triggers,      ///< the engine has none; no subject
    no_ledger,        ///< there is no table Inventory
    column_missing,   ///< of the ledger
    ledger_is_view,   ///< it has no rows of its own
    no_transactions,  ///< its storage engine has none; subject: the engine
    quantity_type,    ///< a quantity that a movement cannot hold exactly; subject: column and type
    key_type,         ///< a key column that a movement cannot hold; subject: column and type
    // These are told.
    no_key_index,   ///< each posting reads the whole ledger
    inexact_key,    ///< a key column that passes over case or the like: keys share rows; subject: column and collation
    other_trigger,  ///< a trigger of somebody else on the ledger; subject: its name
};

struct AdoptionNote {
    AdoptionFinding finding;
    std::string subject;

    /// Whether the database cannot be adopted because of it.
    [[nodiscard]] bool refuses() const { return finding < AdoptionFinding::no_key_index; }
};

/// Looks at the ledger that is there; changes nothing. The order is that of the enumeration.
std::vector<AdoptionNote> look_before_adopting(NativeConnection& database);

}  // namespace vantlo
