#pragma once

#include <string>

namespace vantlo {

/// Whether texts that a spreadsheet would take for a formula get an apostrophe before them.
enum class CsvCells { for_spreadsheets, exact };

/// A field of a CSV record.
/// Source   RFC 4180: a field with a comma, a quote or a line end stands in quotes, quotes doubled. Spreadsheets run what
///          begins with = + - @, a tab or a carriage return; plain numbers stay as they are.
/// Example  `=1+1` -> `'=1+1`; `-4` -> `-4`
std::string csv_field(const std::string& text, CsvCells cells = CsvCells::for_spreadsheets);

}  // namespace vantlo
