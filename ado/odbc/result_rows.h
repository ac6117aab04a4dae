#pragma once

#include "ado/native/native_connection.h"

namespace vantlo {

/// Raised when a call on a statement's handle fails. The owner of the handle reads the account from the driver.
struct StatementFailed {};

/// What an ODBC call on a statement returned, unless it failed.
/// Errors   StatementFailed.
std::int16_t checked(std::int16_t result);

/// The rows of the result that an ODBC statement stands before, all of them.
///
/// Exact numbers that fit are Currency and never pass through binary floating point; binary numbers are never read as
/// text.
/// column_count     at least 1
/// Errors           StatementFailed.
ResultTable read_rows(void* statement, std::int16_t column_count);

}  // namespace vantlo
