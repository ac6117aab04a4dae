#pragma once

#include <cstdint>

namespace vantlo {

/// Automation's 16-bit Boolean as a parameter carries it: a host may pass any value, and only -1 is exactly True.
enum class VariantBool : std::int16_t { exactly_true = -1, exactly_false = 0 };

}  // namespace vantlo
