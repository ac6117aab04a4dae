#pragma once

#include <cstdint>
#include <optional>

#include "automation/currency.h"
#include "automation/text.h"

namespace vantlo {

/// Numbers as text, with a point as decimal separator in every locale, and no minus sign before 0.
///
/// Source   automation's own number text: at most 7 significant digits for a Single and 15 for a Double, the exponent
///          form (`1E+07`, `1.234568E+07`, `1E-05`) where the plain one would need more digits or four leading zeros.
/// Errors   overflow for infinity and NaN.
Text number_text(std::int32_t value);
Text number_text(float value);
Text number_text(double value);

/// At most four decimals, no trailing zeros, never an exponent.
Text number_text(Currency value);

/// Reads a text as automation reads a number: blanks around it, a sign, digits with commas between them and one point,
/// an exponent after E or D.
/// Returns  nothing if the text is no number. Errors: overflow if the number does not fit the type.
std::optional<double> double_from_text(TextView text);

/// The same texts, read exactly, rounded half to even at the fourth decimal.
std::optional<Currency> currency_from_text(TextView text);

/// The same texts, read exactly, rounded half to even to a whole number.
std::optional<std::int32_t> long_from_text(TextView text);

}  // namespace vantlo
