#pragma once

#include <string>
#include <vector>

#include "bills/ledger_row.h"
#include "tool/output/csv_field.h"

namespace vantlo {

// Ledger rows for other programs, in UTF-8. Field names are English in every language, quantities exact, with a point.

/// An array of objects, one a line.
std::string ledger_json(const std::vector<LedgerRow>& rows);

/// One object a line.
std::string ledger_json_lines(const std::vector<LedgerRow>& rows);

/// A heading and one record a row.
/// Source   RFC 4180: lines end with CR LF, a field with a comma, a quote or a line end stands in quotes, quotes doubled.
std::string ledger_csv(const std::vector<LedgerRow>& rows, CsvCells cells = CsvCells::for_spreadsheets);

}  // namespace vantlo
