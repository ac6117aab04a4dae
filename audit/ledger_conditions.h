#pragma once

#include <string>
#include <vector>

#include "ado/native/native_connection.h"

namespace vantlo {

/// What a database is like, whatever its rows say, where postings, repairs or the journal of movements need it otherwise.
enum class Condition {
    no_ledger,           ///< there is no table Inventory; no subject
    column_missing,      ///< of the ledger
    older_table,         ///< an earlier version made a table of vantlo's own; subject: table and column that it lacks
    ledger_is_view,      ///< no subject
    no_rollback,         ///< a failed bill and a dry run stay in the table; subject: table and storage engine
    key_ignores_case,    ///< keys that differ in case share rows; subject: the columns, here and below
    key_ignores_width,   ///< so do full-width and half-width characters
    key_ignores_blanks,  ///< so do texts with and without blanks at the end
    no_key_index,        ///< each posting reads the whole ledger; no subject
    other_trigger,       ///< a trigger or rule of somebody else on the ledger; subject: its name
};

struct LedgerCondition {
    Condition condition;
    std::string subject;

    friend bool operator==(const LedgerCondition&, const LedgerCondition&) = default;
};

/// Looks at the database, in the order of the enumeration; changes nothing. Errors   Failure.
std::vector<LedgerCondition> ledger_conditions(NativeConnection& database);

/// Whether the condition would spoil a repair.
bool refuses_repair(Condition condition);

/// Whether no journal can be kept beside it.
bool refuses_adoption(Condition condition);

}  // namespace vantlo
