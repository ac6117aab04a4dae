#pragma once

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

#include "bills/bill.h"

namespace vantlo {

/// A table of master data, with the fields of files that fill it.
struct MasterTable {
    std::string_view field;  ///< its name in files
    const char16_t* name;
    std::span<const BillColumn> columns;
    std::size_t keys;    ///< how many columns, from the first, are its key
    std::size_t needed;  ///< how many of these a row must give; others are empty or 0 where it does not
};

/// A row of a master table: a warehouse, a kind of goods, a unit.
struct MasterRow {
    const MasterTable* table;
    Record values;
    std::vector<TextView> left_out = {};  ///< columns whose values it does not know: a stored row keeps its own

    [[nodiscard]] bool knows(TextView column) const {
        return std::find(left_out.begin(), left_out.end(), column) == left_out.end();
    }
    [[nodiscard]] std::span<const BillColumn> keys() const { return table->columns.first(table->keys); }
};

std::span<const MasterTable> master_tables();

/// The table that files call by that name; null if there is none.
const MasterTable* find_master_table(std::string_view field);

}  // namespace vantlo
