#pragma once

#include <ole2.h>

#include "automation/variant.h"
#include "component/member_table.h"

namespace vantlo {

/// The interface that a line's parameter declares.
/// Returns  null for LineType::none.
const IID* declared_interface(LineType type);

/// Reads a property through the declared interface's own getter.
///
/// `line` is a pointer to that interface.
/// Returns  false where the interface has no such property.
/// Errors   what the getter reports, as an automation host sees it.
bool read_declared(LineType type, IDispatch& line, TextView name, Variant& value);

}  // namespace vantlo
