#pragma once

#include <optional>

#include "ado/connection.h"
#include "bills/bill.h"

namespace vantlo {

/// ` where Id=` or the like, followed by the literal of a bill's identifier.
Text where_bill(const BillTable& table, const Text& id);

/// The bill of that kind and id as it is stored; nothing if there is none. Errors: Failure.
std::optional<Bill> stored_bill(Connection& database, const BillKind& kind, const Text& id);

/// Whether a bill is stored as `bill` would be: texts without the blanks around them, quantities as a Single keeps them.
bool is_stored_as(const Bill& stored, const Bill& bill);

}  // namespace vantlo
