#pragma once

#include <map>

#include "import/input_errors.h"
#include "reports/stock_count.h"

namespace vantlo {

/// Reads a counting sheet that was filled in, as a spreadsheet program may have saved it: commas, semicolons or tabs between
/// the cells, decimal commas where no comma stands between cells, UTF-8 or GB18030, other columns and empty rows besides.
/// Rows that were added by hand may leave sheet, warehouse and status out.
/// Errors   a row that cannot be taken is reported with its place.
CountedSheet read_counted_sheet(const std::string& path, InputErrors& errors);

}  // namespace vantlo
