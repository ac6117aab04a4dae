#pragma once

#include "bookkeeping/transaction_retry.h"

namespace vantlo {

/// Connections for a dry run: all bills are saved in one transaction, which is rolled back at the end of the connection.
/// Later bills see the earlier ones; other connections see none of them, but wait for the locks.
///
/// A failure discards the rehearsal; there is no retry.
Connect rehearsing(Connect connect);

}  // namespace vantlo
