#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/bill.h"

namespace vantlo::host {

/// A file that cannot be taken as it is: what is wrong, and where.
class BadInput : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A row of a master table: a warehouse, a kind of goods, a unit.
struct MasterRow {
    const char16_t* table;
    Record values;
};

/// What a file holds: master data and bills, in the order in which they stand.
struct ShopFile {
    std::vector<MasterRow> master;
    std::vector<Bill> bills;
};

/// Reads a JSON file of master data and bills.
///
/// Shape    {"warehouses": [...], "goods": [...], "units": [...], "bills": [{"kind", "id", "date", ..., "lines": [...]}]},
///          every part optional. Fields of bills are those of the bill's kind; texts left out are empty, numbers 0.
/// Errors   BadInput for a file that is missing or no JSON, an unknown field or kind, a value of the wrong type.
ShopFile read_shop_file(const std::string& path);

}  // namespace vantlo::host
