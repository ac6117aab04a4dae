#pragma once

#include <span>
#include <string_view>

#include "bills/bill.h"

namespace vantlo {

/// A table of master data, with the fields of files that fill it.
struct MasterTable {
    std::string_view field;  ///< its name in files
    const char16_t* name;
    std::span<const BillColumn> columns;
    std::size_t keys;  ///< how many columns, from the first, are its key
};

/// A row of a master table: a warehouse, a kind of goods, a unit.
struct MasterRow {
    const MasterTable* table;
    Record values;
};

std::span<const MasterTable> master_tables();

/// The table that files call by that name; null if there is none.
const MasterTable* find_master_table(std::string_view field);

}  // namespace vantlo
