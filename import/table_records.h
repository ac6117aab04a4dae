#pragma once

#include <functional>
#include <string>

#include "bills/master_tables.h"
#include "import/csv_reader.h"
#include "import/input_value.h"

namespace vantlo {

/// Takes a record as JSON would have it; `table` is null for a bill.
using TakeRecord = std::function<void(const MasterTable* table, const InputValue& record)>;

/// Reads a table: rows of one master table, or of bills, whose own fields stand in columns `bill.FIELD` and whose lines
/// are the rows that follow each other with the same `bill.kind` and `bill.id`, or with blank cells in all the bill's
/// columns. An empty cell counts as a field left out; a row without any value of a line adds none; rows without any
/// value, and columns without heading and values, are passed over.
///
/// `table` is the field name of the master table.
/// Errors   columns that no record has, cells that differ from the bill's first row, rows of the wrong length, values
///          without a heading; without a header that says what the rows are, nothing is read.
void read_table(const SourceText& source, const NextRow& next, const std::string& table, InputErrors& errors,
                const TakeRecord& take);

/// Whether the row names columns of bills.
bool is_header_of_bills(const TableRow& row);

/// Whether no cell of the row has a value.
bool is_blank_row(const TableRow& row);

}  // namespace vantlo
