#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "automation/error_text.h"
#include "bills/bill.h"
#include "bills/master_tables.h"

namespace vantlo {

/// Files that cannot be taken as they are: all that is wrong, and where.
class BadInput : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What a file holds: master data and bills, in the order in which they stand.
struct ShopFile {
    std::vector<MasterRow> master;
    std::vector<Bill> bills;
};

/// Reads a file of master data and bills: CSV or JSON Lines if it is named so, else JSON.
/// Errors   BadInput, in words of that language.
ShopFile read_shop_file(const std::string& path, Language language);

}  // namespace vantlo
