#pragma once

#include "automation/error.h"

namespace vantlo {

/// Shows the user that a routine failed: the routine's name, "():" and the standard text of the error number.
/// Allocates nothing, so that it works when memory has run out.
/// Example  `show_failure(u"In_AddInventory", 13)` shows "In_AddInventory():类型不匹配" under the title "提示信息".
void show_failure(const char16_t* routine, ErrorNumber number) noexcept;

}  // namespace vantlo
