#pragma once

#include <vector>

#include "ado/native/native_connection.h"
#include "bills/bill.h"

namespace vantlo {

/// What a database knows of a bill that is to be imported.
enum class BillState {
    absent,
    imported,  ///< with the same content
    imported_otherwise,
    stored_otherwise,  ///< under this id, by another road than import or as a bill of another kind
    lost,              ///< imported, but its rows are gone
};

/// Sixteen hexadecimal digits that differ for bills whose headers or lines differ.
Text content_digest(const Bill& bill);

/// The state of each bill. Reads the bill tables and PostingJournal, some hundred bills a statement.
std::vector<BillState> states_of(NativeConnection& database, const std::vector<Bill>& bills);

}  // namespace vantlo
