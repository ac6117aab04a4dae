#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ado/connection.h"
#include "automation/error_text.h"

namespace vantlo {

/// Which rows of the ledger are wanted; an empty text means any.
struct LedgerFilter {
    Text warehouse;
    Text goods;
    Text goods_class = {};
    std::optional<std::int32_t> status = {};
};

/// One row of the ledger, with the names of its warehouse and goods where they are known.
struct LedgerRow {
    Text warehouse, warehouse_name;
    Text goods, goods_name;
    Text model1, model2;
    Text status;
    Text goods_class, unit;
    Currency received, issued, on_hand;
};

/// The row that a recordset of the ledger stands on; it knows the names only where the recordset has them.
LedgerRow ledger_row(Recordset& rows, bool has_names = false);

/// The key of a row, for people.
/// Example  `W01 G009 曜石黑, status 0`
std::string key_text(const LedgerRow& row, Language language);

/// A quantity as number_text writes it, in UTF-8.
std::string quantity_text(Currency value);

/// The wanted rows, by warehouse, goods, models and status.
std::vector<LedgerRow> read_ledger(Connection& database, const LedgerFilter& filter);

}  // namespace vantlo
