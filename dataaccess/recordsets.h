#pragma once

#include "ado/recordset.h"

namespace vantlo {

/// The recordset that a variable holds. Errors: object_not_set if it holds none.
Recordset& require_set(const RecordsetVariable& variable);

inline namespace CorvaneOPT_Function {

/// Assigns a new recordset, bound to the project-wide connection, with a client-side dynamic cursor.
/// Errors   shown to the user under this routine's name; the variable keeps what was assigned before the error.
void Open_Recordset(RecordsetVariable& rs);

/// Closes the recordset unless it is closed, and releases it. Errors: ignored.
void Close_Recordset(RecordsetVariable& rs);

}  // namespace CorvaneOPT_Function
}  // namespace vantlo
