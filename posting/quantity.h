#pragma once

#include "automation/currency.h"
#include "posting/line.h"

namespace vantlo {

// Base quantities: a line's quantity times the factor of its goods and unit, in Currency arithmetic. The four ways
// differ in what is read and what is converted first, and so in what fails first and whether the unit look-up has run
// by then.

/// A line being saved, its quantity converted before the look-up: reads Gid, the quantity, Unit;
/// CCur(quantity) × factor.
Currency quantity_times_factor(Line& line, TextView column);

/// A stored line, its quantity converted before the look-up: CCur(quantity) × factor of CStr(Gid), CStr(Unit).
Currency stored_quantity_times_factor(Line& line, TextView column);

/// Reads Gid, the quantity, Unit; factor × CCur(quantity): a null quantity fails after the look-up.
Currency factor_times_quantity(Line& line, TextView column);

/// Reads Gid and Unit, looks the factor up, and only then reads the quantity: factor × CCur(quantity).
Currency factor_times_quantity_read_last(Line& line, TextView column);

/// As the first two, with the magnitude of the quantity, taken before the factor is applied.
Currency magnitude_times_factor(Line& line, TextView column);
Currency stored_magnitude_times_factor(Line& line, TextView column);

}  // namespace vantlo
