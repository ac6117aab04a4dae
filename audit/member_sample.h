#pragma once

#include <array>
#include <optional>
#include <vector>

#include "component/member_table.h"

namespace vantlo {

/// Where a member takes a value from.
struct Origin {
    enum class Place { constant, argument, line, header };

    Place place = Place::constant;
    Text name;  ///< of the parameter, the property or the column; of a constant its value

    friend bool operator==(const Origin&, const Origin&) = default;
};

/// The status of the ledger row that a movement changes.
struct StatusRule {
    Origin origin;

    /// Empty where the status is the origin's value. Else the statuses for its values 0, 1, 2 and so on; the last one
    /// stands for every other value.
    std::vector<Text> translated;

    friend bool operator==(const StatusRule&, const StatusRule&) = default;
};

enum class Counter { received, issued, on_hand };

/// The new value of one counter: that of `from` before the movement, plus or minus the quantity; sign 0 leaves it out.
struct CounterRule {
    Counter from;
    int sign;

    friend bool operator==(const CounterRule&, const CounterRule&) = default;
};

/// What a movement does to the counters of a row, in the order of Counter. Those of a new row start at 0.
struct RowRule {
    std::array<CounterRule, 3> counters;
    Origin quantity;
    bool in_base_units;  ///< the quantity is multiplied by the factor of its unit; else it is taken as it stands

    friend bool operator==(const RowRule&, const RowRule&) = default;
};

/// One ledger row that a member changes for each line, or for the header.
struct SampleMovement {
    Origin warehouse;
    StatusRule status;
    RowRule new_row;
    RowRule existing_row;
    bool overwrites_remarks;
};

/// A parameter that limits a call to lines whose goods have the argument in a column of Goods.
struct LineFilter {
    Text parameter;
    Text goods_column;
};

/// What a member does to the ledger, found by calling it.
struct MemberSample {
    enum class Sign { kept, dropped, dropped_on_request };
    enum class NullQuantity { fails, empties_counters };

    std::vector<SampleMovement> movements;  ///< in the order of the statements
    std::vector<LineFilter> filters;
    Sign sign_of_quantity = Sign::kept;
    Text magnitude_parameter;      ///< True requests the magnitude of the quantity
    bool is_rounded_once = false;  ///< the product with the factor is rounded, the quantity before it is not
    NullQuantity null_quantity = NullQuantity::fails;
    std::int32_t result_without_bill = 0;  ///< for a member that reads a stored bill which is not there
};

/// Calls a method on a sample bill, in an SQLite database in memory, and compares the ledger before and after. The fields
/// of the bill hold different values, so that each value in the ledger shows where it comes from.
/// Errors   std::logic_error for a method that fails on the sample or posts what is not in it.
MemberSample sample_member(const Member& method);

}  // namespace vantlo
