#pragma once

#include <functional>
#include <string>

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

/// Runs the repairs in the transaction that is open, and enters each row before and after into RepairJournal.
void run_repairs(const std::vector<Repair>& repairs, NativeConnection& database, const NameOfCause& name_of_cause);

}  // namespace vantlo
