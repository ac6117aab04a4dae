#pragma once

#include <functional>
#include <string>

#include "audit/repair_journal.h"
#include "audit/verification.h"

namespace vantlo {

/// What sets the rows of one key right.
struct Repair {
    Cause cause;
    LedgerKey key;
    std::vector<LedgerEntry> before;
    std::vector<LedgerEntry> after;

    Text removal;                  ///< the statement that deletes all rows of the key; empty if they stay
    std::vector<Text> statements;  ///< to be run once every removal has been

    friend bool operator==(const Repair&, const Repair&) = default;
};

/// The repairs of all that differs; a bill that cannot be posted has none.
std::vector<Repair> repairs_of(const std::vector<Finding>& findings);

/// A cause in words, for the journal.
using NameOfCause = std::function<std::string(Cause)>;

/// How the program is called in the journal of movements, before the number of the repair.
inline constexpr TextView repair_program = u"vantlo repair ";
Text program_of_repair(std::int64_t number);

struct RepairOutcome {
    std::int64_t number = 0;  ///< of the repair, in RepairJournal

    /// Keys for which the database finds other rows than those of the repair, before it or after it: it takes differing
    /// texts for equal, or something swallows what is written. To be rolled back if there are any.
    std::vector<LedgerKey> spoilt;
};

/// Runs the repairs in the transaction that is open, and enters each row, whole, before and after into RepairJournal.
/// Errors   Failure.
RepairOutcome run_repairs(const std::vector<Repair>& repairs, NativeConnection& database,
                          const NameOfCause& name_of_cause);

}  // namespace vantlo
