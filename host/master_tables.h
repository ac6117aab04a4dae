#pragma once

#include <span>
#include <string_view>

#include "host/bill_kinds.h"

namespace vantlo::host {

/// A table of master data, with the fields of files that fill it.
struct MasterTable {
    std::string_view field;  ///< its name in files
    const char16_t* name;
    std::span<const BillColumn> columns;
    std::size_t keys;  ///< how many of the columns, from the first, tell its rows apart
};

std::span<const MasterTable> master_tables();

/// The table that files call by that name; null if there is none.
const MasterTable* find_master_table(std::string_view field);

}  // namespace vantlo::host
