#pragma once

#include "reports/listing.h"
#include "reports/movements.h"

namespace vantlo {

/// What a report's rows stand for.
enum class ReportBy { warehouse, goods, goods_class, kind, day, month };

/// The received, issued and on-hand stock of a period, in rows by `by` and unit: quantities of different units are never added.
/// Goods of which nobody said the unit have one of their own, `? ID`.
///
/// opening + received - issued + adjusted = closing in each row. `adjusted` is what was put on hand past received and issued.
/// Where the period ends now, closing is what the ledger holds. By kind there is neither opening nor closing, since a kind of
/// bill has no stock; movements without a bill have an empty kind. The entries by which the journal began count as opening.
///
/// Rows whose quantities are all 0 are left out.
/// Errors   Failure, if there is no journal of movements.
Listing report_period(NativeConnection& database, ReportBy by, const Period& period);

}  // namespace vantlo
