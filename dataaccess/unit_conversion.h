#pragma once

#include <optional>

#include "automation/currency.h"
#include "automation/text.h"

namespace vantlo {
inline namespace GetValue_Function {

/// The number of base units in one unit of the goods.
///
/// Reads    the row of GoodsUnit for the goods and the unit, through the project-wide connection.
/// Returns  its UnitConverter, to four decimals; 1 if there is no row or the factor is null or 0.
/// Errors   shown to the user under this routine's name; the error number is then returned as the factor, and the
///          posting goes on with it. Hosts rely on this.
Currency GoodsUnitConverter(const Text& gid, const Text& unit);

}  // namespace GetValue_Function

/// What a unit look-up asks for.
struct UnitLookup {
    Text gid;
    Text unit;
};

/// The unit look-up that a statement is; nothing for any other statement.
std::optional<UnitLookup> recognize_unit_lookup(TextView statement);

}  // namespace vantlo
