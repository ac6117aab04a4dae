#pragma once

#include <set>
#include <vector>

#include "audit/movements.h"
#include "audit/recomputation.h"

namespace vantlo {

/// What the statements of one event add, in their order.
struct Effect {
    std::vector<std::pair<LedgerKey, Amounts>> steps;

    /// From a step on, by key, without those that cancel out.
    [[nodiscard]] AmountsByKey from(std::size_t step) const;
};

/// The effects of all events, by event.
std::vector<Effect> effects_of(const Recomputation& expected, std::size_t events);

/// A bill by its table of headers and its id: one that became a bill of another kind is the same bill.
using BillPlace = std::pair<Text, Text>;

BillPlace place_of(const BillName& name);

/// What a bill has moved by the journal, beside what it moves as it is stored now.
struct BillAccount {
    BillName name;
    AmountsByKey moved;
    std::size_t movements = 0;
    AmountsByKey says;
    std::vector<std::size_t> events;  ///< in the timeline, those that take part

    /// What was moved too much, without the keys where that is nothing.
    [[nodiscard]] AmountsByKey surplus() const;
};

std::map<BillPlace, BillAccount> bill_accounts(const BillTimeline& timeline, const std::vector<Effect>& effects,
                                               const Movements& movements);

}  // namespace vantlo
