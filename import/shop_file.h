#pragma once

#include <string>
#include <vector>

#include "automation/error_text.h"
#include "bills/bill.h"
#include "bills/master_tables.h"
#include "bills/task_error.h"

namespace vantlo {

/// What a file holds: master data and bills, in the order in which they stand.
struct ShopFile {
    std::vector<MasterRow> master;
    std::vector<Bill> bills;
};

/// Reads a file of master data and bills: CSV or JSON Lines if it is named so, else JSON.
/// Errors   TaskError with Reason::bad_input, in words of that language.
ShopFile read_shop_file(const std::string& path, Language language);

}  // namespace vantlo
