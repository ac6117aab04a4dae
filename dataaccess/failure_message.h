#pragma once

#include "automation/error.h"

namespace vantlo {

/// What a routine does with its own failure besides returning it.
enum class OnError { tell_user, stay_silent };

/// Shows the user that a routine failed: its name, "():" and the standard text of the error number, joined.
/// Example  `show_failure(u"In_AddInventory", 13)` shows "In_AddInventory():类型不匹配" under the title "提示信息".
/// Needs no memory of its own, so that it can tell of the lack of it.
void show_failure(const char16_t* routine, ErrorNumber number) noexcept;

/// Runs the body of a routine that ends its own failures: a failure becomes the result, and shown if the user is told.
/// Returns  what the body returns, or the number of the failure.
template <typename Body>
std::int32_t run_trapped(const char16_t* routine, OnError on_error, Body body) noexcept {
    try {
        return body();
    } catch (...) {
        const ErrorNumber number = number_of_current_exception();
        if (on_error == OnError::tell_user) show_failure(routine, number);
        return number;
    }
}

/// Runs the body of a helper that reports for itself.
/// Returns  0, or the number of the failure, which has been shown.
template <typename Body>
ErrorNumber run_helper(const char16_t* routine, Body body) noexcept {
    return run_trapped(routine, OnError::tell_user, [&] {
        body();
        return 0;
    });
}

}  // namespace vantlo
