#pragma once

#include <span>
#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "bills/bill.h"
#include "bills/master_tables.h"

namespace vantlo {

/// What bills that are about to be posted name and nobody knows, and what of them would come to nothing. Texts are for
/// people, each once, in order.
struct DoubtfulNames {
    std::vector<std::string> goods;
    std::vector<std::string> warehouses;
    std::vector<std::string> units;            ///< `G1 box`: each counts as one base unit
    std::vector<std::string> factors;          ///< `G1 box -2`: 0 or below, or 0 to four decimals
    std::vector<std::string> zero_quantities;  ///< `stock-in B1 2`, its line from 1: not 0, but 0 in base units

    /// Whether the shop keeps the table at all, in its database or in the files.
    bool keeps_goods = false;
    bool keeps_warehouses = false;
};

/// Looks the names up in the database's master tables and among `master`. Tables that are not there count as empty.
DoubtfulNames doubtful_names(NativeConnection& database, std::span<const MasterRow> master,
                             std::span<const Bill* const> bills);

/// A value of a master row that is there already and would get another.
struct MasterChange {
    const MasterRow* row;
    std::string_view field;
    Text before;
    Text after;
    std::int64_t lines = 0;  ///< of a factor: how many stored lines are in that unit
};

/// The changes that rows would make to the database's master tables.
std::vector<MasterChange> master_changes(NativeConnection& database, std::span<const MasterRow> master);

}  // namespace vantlo
