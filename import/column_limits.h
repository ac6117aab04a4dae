#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

#include "bills/bill_kinds.h"

namespace vantlo {

/// What the tables can hold, read from the script that makes them.
class ColumnLimits {
public:
    struct Limit {
        std::size_t longest_text = 0;  ///< in UTF-16 code units; 0 for other types
        bool is_short = false;         ///< a whole number of 16 bits
    };

    ColumnLimits();

    /// Errors   std::out_of_range for a column that the tables lack.
    [[nodiscard]] const Limit& of(TextView table, TextView column) const;

private:
    std::unordered_map<Text, Limit> limits_;  ///< by `TABLE.COLUMN`
};

}  // namespace vantlo
