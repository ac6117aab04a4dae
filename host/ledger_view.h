#pragma once

#include <string>
#include <vector>

#include "ado/native_connection.h"
#include "automation/error_text.h"

namespace vantlo::host {

/// Which rows of the ledger are wanted; an empty text means any.
struct LedgerFilter {
    Text warehouse;
    Text goods;
};

/// One row of the ledger, with the names of its warehouse and goods where they are known.
struct LedgerRow {
    Text warehouse, warehouse_name;
    Text goods, goods_name;
    Text model1, model2;
    Text status;
    Text unit;
    Currency received, issued, on_hand;
};

/// The wanted rows, by warehouse, goods, models and status.
std::vector<LedgerRow> read_ledger(NativeConnection& database, const LedgerFilter& filter);

/// The rows as a table for people, with the totals of the three quantities.
std::string ledger_table(const std::vector<LedgerRow>& rows, Language language);

}  // namespace vantlo::host
