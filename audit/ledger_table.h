#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ado/native/native_connection.h"

namespace vantlo {

/// A column of the ledger as the engine's catalog describes it.
struct LedgerColumn {
    std::string name;
    std::string type;          ///< in small letters, without its digits
    std::int64_t length = -1;  ///< in characters; -1 where the catalog has none, here and below
    std::int64_t digits = -1;
    std::int64_t decimals = -1;
};

/// The table Inventory as the engine's catalog describes it.
struct LedgerTable {
    bool is_described = false;  ///< whether the engine has a catalog that is known; all else is empty without one
    bool is_view = false;
    std::vector<LedgerColumn> columns;  ///< those that can be written: no computed ones
    std::vector<std::string> indexes;   ///< the columns of each, in order, in small letters, with commas between
    std::vector<std::string> triggers;  ///< of others than vantlo; rules too, where the engine has them

    /// The column of that name, in any case; null if there is none.
    [[nodiscard]] const LedgerColumn* column(std::string_view name) const;
};

/// Reads the catalog; changes nothing. Errors   Failure.
LedgerTable read_ledger_table(NativeConnection& database);

}  // namespace vantlo
