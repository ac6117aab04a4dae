#pragma once

#include "bookkeeping/transaction_retry.h"

namespace vantlo {

/// The same connections for a dry run: everything happens in one transaction, from the first `begin` to the end of the
/// connection, and is then rolled back. Look-ups see what was done before them, and nothing else does; the locks are those of
/// the real thing, for as long.
///
/// A failure ends the rehearsal: what was done before it is gone, and nothing helps against it.
Connect rehearsing(Connect connect);

}  // namespace vantlo
