#pragma once

#include <span>

#include "ado/native/native_connection.h"
#include "bills/bill.h"

namespace vantlo {

/// A database in memory on which bills can be posted and taken back as on `source`, which is only read: it has the rows of
/// the ledger and of the master tables for the goods of the bills. Those that are `stored` are in its bill tables.
Owned<NativeConnection> copy_for_rehearsal(NativeConnection& source, std::span<const Bill* const> bills,
                                           std::span<const Bill* const> stored);

/// Whether the connection refuses to write: a file or an account without the right, a replica, a read-only session.
bool is_read_only(NativeConnection& database);

}  // namespace vantlo
