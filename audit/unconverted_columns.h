#pragma once

#include <span>

#include "automation/text.h"

namespace vantlo {

struct ColumnName {
    TextView table;
    TextView column;
};

/// The columns of bill tables whose values members write into statements as they read them, without converting them to a
/// text or a quantity first. A decimal or a 64-bit integer has no literal there: the statement lacks it, and fails.
///
/// Found by calling each member that reads a stored bill, on bills of one line, once for each of its columns.
std::span<const ColumnName> unconverted_columns();

}  // namespace vantlo
