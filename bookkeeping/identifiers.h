#pragma once

#include "ado/native/dialect.h"
#include "automation/text.h"

namespace vantlo {

/// An identifier, in UTF-8, between the quotes of the dialect.
/// Example  `to "do"` -> `"to ""do"""`
Text quoted_identifier(std::string_view name, const Dialect& dialect);

}  // namespace vantlo
