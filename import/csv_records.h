#pragma once

#include <functional>
#include <string>

#include "bills/master_tables.h"
#include "import/csv_reader.h"
#include "import/input_value.h"

namespace vantlo {

/// Takes a record as JSON would have it; `table` is null for a bill.
using TakeRecord = std::function<void(const MasterTable* table, const InputValue& record)>;

/// Reads a CSV file: rows of one master table, or of bills, whose own fields stand in columns `bill.FIELD` and whose
/// lines are the rows that follow each other with the same `bill.kind` and `bill.id`. An empty cell counts as a field
/// left out; a row without any value of a line adds none.
///
/// `table` is the field name of the master table; if it is empty, the file is named after it.
/// Errors   columns that no record has, cells that differ from the bill's first row, rows of the wrong length; without a
///          header that says what the rows are, nothing is read.
void read_csv(const SourceText& source, const std::string& table, InputErrors& errors, const TakeRecord& take);

}  // namespace vantlo
