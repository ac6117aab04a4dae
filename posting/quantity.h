#pragma once

#include <array>

#include "automation/currency.h"
#include "posting/line.h"

namespace vantlo {

/// The steps that make a base quantity.
enum class QuantityStep {
    goods,     ///< read Gid as a text
    unit,      ///< read Unit as a text
    quantity,  ///< read the quantity
    convert,   ///< CCur(quantity), or its magnitude
    factor,    ///< look up the factor of the goods' unit
};

/// The order in which a base quantity is made: it decides which read the host sees first, and which failure.
struct QuantityRule {
    std::array<QuantityStep, 5> steps;
    bool takes_magnitude = false;
};

/// The orders that the families use.
namespace quantity_rule {
using enum QuantityStep;

// clang-format off
inline constexpr QuantityRule line_in_hand           = {{goods, quantity, unit, convert, factor}};
inline constexpr QuantityRule line_in_hand_magnitude = {{goods, quantity, unit, convert, factor}, true};
inline constexpr QuantityRule stored_line            = {{quantity, convert, goods, unit, factor}};
inline constexpr QuantityRule stored_line_magnitude  = {{quantity, convert, goods, unit, factor}, true};
inline constexpr QuantityRule converted_last         = {{goods, quantity, unit, factor, convert}};
inline constexpr QuantityRule read_last              = {{goods, unit, factor, quantity, convert}};
// clang-format on
}  // namespace quantity_rule

/// A line's quantity times the factor of its goods and unit, in Currency arithmetic.
/// `column` names the quantity.
/// Errors   raised to the caller; a factor that cannot be looked up is the number of its error instead.
Currency base_quantity(Line& line, TextView column, const QuantityRule& rule);

}  // namespace vantlo
