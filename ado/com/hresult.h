#pragma once

#include <windows.h>

#include "automation/error.h"

namespace vantlo {

/// The error number under which an automation host sees a failed call.
/// Source   automation hosts keep the low word of 0x800A…, give dispatch and memory failures numbers of their own, and
///          leave every other HRESULT as it is.
ErrorNumber error_number(HRESULT result);

/// The HRESULT by which an automation host knows an error of the number: the way back. E_FAIL for a number that has none.
HRESULT dispatch_result(ErrorNumber number);

/// Raises the Failure of a call that did not succeed; `what` names the call for people.
void check(HRESULT result, const char* what);

}  // namespace vantlo
