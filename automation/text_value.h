#pragma once

#include "automation/variant.h"

namespace vantlo {

/// The text of a value, as `to_text` makes it; empty for Null.
inline Text text_or_empty(const Variant& value) { return value.is<Null>() ? Text() : to_text(value); }

}  // namespace vantlo
