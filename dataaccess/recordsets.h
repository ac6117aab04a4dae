#pragma once

#include "ado/recordset.h"

namespace vantlo {

/// The recordset that a variable holds. Errors: object_not_set if it holds none.
Recordset& held(const RecordsetVariable& variable);

inline namespace CorvaneOPT_Function {

/// Puts a new recordset into the variable, bound to the project-wide connection, with a client-side dynamic cursor.
/// Errors   shown to the user under this routine's name; the variable keeps what it had been given by then.
void Open_Recordset(RecordsetVariable& rs);

/// Closes the recordset if it is not closed yet, and lets go of it. Errors: ignored, all of them.
void Close_Recordset(RecordsetVariable& rs);

}  // namespace CorvaneOPT_Function
}  // namespace vantlo
