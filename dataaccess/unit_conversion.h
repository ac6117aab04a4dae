#pragma once

#include "automation/currency.h"
#include "automation/text.h"

namespace vantlo {
inline namespace GetValue_Function {

/// How many base units of some goods one of the given units holds.
///
/// Reads    the row of GoodsUnit for the goods and the unit, through the project-wide connection.
/// Returns  its UnitConverter, to four decimals; 1 where there is no row, no factor or the factor 0.
/// Errors   shown to the user under this routine's name; the error number itself is then the factor. Hosts rely on the
///          posting going on with it.
Currency GoodsUnitConverter(const Text& gid, const Text& unit);

}  // namespace GetValue_Function
}  // namespace vantlo
