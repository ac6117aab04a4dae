#pragma once

#include "automation/error.h"
#include "dataaccess/failure_message.h"

namespace vantlo {

/// Whether a routine shows its failure besides returning its number.
enum class OnError { tell_user, stay_silent };

/// Runs the body of a routine under its error trap: a failure becomes the result and is shown to the user.
///
/// What the body owns is released before the message is shown, what its caller owns after it has been dismissed.
/// Returns  what the body returns, or the number of the failure.
template <typename Body>
std::int32_t run_trapped(const char16_t* routine, OnError on_error, Body body) noexcept {
    ErrorNumber number = 0;
    try {
        return body();
    } catch (...) {
        number = number_of_current_exception();
    }
    if (on_error == OnError::tell_user) show_failure(routine, number);
    return number;
}

/// Runs the body of a helper that shows its own failures.
/// Returns  0, or the number of the failure.
template <typename Body>
ErrorNumber run_helper(const char16_t* routine, Body body) noexcept {
    return run_trapped(routine, OnError::tell_user, [&] {
        body();
        return 0;
    });
}

}  // namespace vantlo
