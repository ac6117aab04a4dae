#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "audit/row_image.h"

namespace vantlo {

// The table RepairJournal: each row of the ledger that a repair changed, whole, before and after. The rows of one repair,
// which is one transaction, have one number.

/// The number of the next repair. Errors   Failure.
std::int64_t next_repair_number(NativeConnection& database);

/// What a repair did to the rows of one key; either side can be empty.
struct KeyRepair {
    Text cause;
    std::vector<RowImage> before;
    std::vector<RowImage> after;

    /// The condition that finds the rows.
    [[nodiscard]] Text condition() const { return condition_of(before.empty() ? after.front() : before.front()); }

    friend bool operator==(const KeyRepair&, const KeyRepair&) = default;
};

/// Enters it, in the transaction that is open; `undone` is the number of the repair that was undone by it.
/// Errors   Failure.
void enter_repair(NativeConnection& database, std::int64_t number, const KeyRepair& repair,
                  std::optional<std::int64_t> undone = std::nullopt);

/// A repair as people look for it.
struct PastRepair {
    std::optional<std::int64_t> number;  ///< nothing for what an earlier version entered, all in one
    Text time;                           ///< of the last of its entries
    std::vector<Text> causes;            ///< each once
    std::size_t rows = 0;
    std::optional<std::int64_t> undone;     ///< the repair that it undid
    std::optional<std::int64_t> undone_by;  ///< the latest repair that undid it
};

/// All repairs, by number. Errors   Failure.
std::vector<PastRepair> past_repairs(NativeConnection& database);

/// What the journal has of one repair, a key each.
struct RepairRecord {
    std::vector<KeyRepair> keys;  ///< empty if there is no such repair
    bool is_readable = true;      ///< false if an entry is none of a row
    std::optional<std::int64_t> undone_by;
};

/// Errors   Failure.
RepairRecord read_repair(NativeConnection& database, std::int64_t number);

}  // namespace vantlo
