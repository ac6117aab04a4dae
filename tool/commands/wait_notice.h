#pragma once

#include "bookkeeping/transaction_retry.h"

namespace vantlo {

/// Connections of which every change, and their opening, says on stderr once it has waited for the database for a second:
/// who writes waits for others who write. Queries are not watched, they may take long by themselves. Silent if std::clog is.
Connect with_wait_notice(Connect connect, Language language);

}  // namespace vantlo
