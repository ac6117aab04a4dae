#pragma once

#include <vector>

#include "component/member_table.h"
#include "tests/com/component_library.h"

namespace vantlo::test {

/// One argument of a member: a line object, or a value.
struct ComArgument {
    IDispatch* line = nullptr;
    Variant value;
};

/// The two ways in which hosts call.
enum class Road { early_bound, by_name };

/// Calls a method with arguments for its first parameters; the rest take their defaults, early-bound from the caller as a
/// compiler passes them.
/// Errors   std::runtime_error for a call that COM itself refuses.
LONG call_method(Road road, _Inventory_Class& object, const Member& member, const std::vector<ComArgument>& arguments);

}  // namespace vantlo::test
