#pragma once

#include "ado/native/native_connection.h"
#include "bills/bill_kinds.h"
#include "bills/master_tables.h"
#include "reports/listing.h"
#include "reports/selection.h"

namespace vantlo {

/// Which stored bills are wanted; what is empty does not matter.
struct BillsWanted {
    std::vector<const BillKind*> kinds = {};
    Period period = {};                 ///< of the bill's date
    std::vector<Text> ids = {};         ///< patterns, as in and_matches
    std::vector<Text> goods = {};       ///< patterns: a line, or the header, has such goods
    std::vector<Text> warehouses = {};  ///< patterns: a line, or the header, names such a warehouse
    Text text = {};                     ///< id or remarks of header or line contain it
};

/// Stored bills, by date and id: date, kind, bill, lines, remarks.
/// Errors   Failure, if a table of bills is not there.
Listing list_bills(NativeConnection& database, const BillsWanted& wanted);

/// The rows of a master table: its fields as columns.
/// `patterns` go for the columns of its key, in their order; `text` is contained in one of its texts.
/// Errors   Failure, if the table is not there.
Listing list_master_rows(NativeConnection& database, const MasterTable& table,
                         const std::vector<std::vector<Text>>& patterns, const Text& text);

}  // namespace vantlo
