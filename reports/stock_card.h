#pragma once

#include "bills/ledger_row.h"
#include "reports/movements.h"

namespace vantlo {

/// Which ledger rows' cards are wanted: patterns as in and_matches; what is empty does not matter.
struct CardsWanted {
    std::vector<Text> goods;
    std::vector<Text> warehouses;
    std::vector<Text> models1;
    std::vector<Text> models2;
    std::optional<std::int32_t> status;
    bool without_bill = false;  ///< only movements that no bill made, and rows that have some
    Period period;
    std::int64_t from = 0;  ///< only movements from this number on; earlier ones count as opening balance
};

/// One movement of a ledger row.
struct CardEntry {
    Date moved_at;  ///< local time
    Text action;    ///< as the journal names it: insert, update, opening …
    Text bill_kind, bill_id;
    Variant line;  ///< Null where the program did not tell
    Text member;
    Text user, program;
    Currency received, issued;
    Currency change;   ///< of what is on hand
    Currency balance;  ///< on hand after it
};

/// The movements of one ledger row in a period, in their order, between what was on hand before them and after them.
struct StockCard {
    LedgerRow
        row;  ///< its key, with the names and the unit where they are known; the quantities are sums of the entries'
    Currency opening;
    std::vector<CardEntry> entries;
    Currency closing;
};

/// The cards of all rows that have a movement in the period or something on hand when it begins, by goods, warehouse, models
/// and status. The entries by which the journal began count as opening balance.
/// Errors   Failure, if there is no journal of movements.
std::vector<StockCard> read_cards(NativeConnection& database, const CardsWanted& wanted);

}  // namespace vantlo
