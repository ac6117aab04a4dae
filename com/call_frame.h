#pragma once

#include <windows.h>
#include <xmmintrin.h>

#include <cfenv>

#include "automation/error.h"

namespace vantlo {

/// No floating-point exception is raised as long as this lasts; the host's own settings are there again behind it.
///
/// Some hosts let a NaN end the program. Here it is a number like others that does not fit.
class FloatingPointExceptionsMasked {
public:
    FloatingPointExceptionsMasked() noexcept {
        std::feholdexcept(&x87_of_host_);
        // Which the compiler's library leaves out.
        _mm_setcsr(sse_of_host_ | _MM_MASK_MASK);
    }
    FloatingPointExceptionsMasked(const FloatingPointExceptionsMasked&) = delete;
    FloatingPointExceptionsMasked& operator=(const FloatingPointExceptionsMasked&) = delete;
    ~FloatingPointExceptionsMasked() {
        std::fesetenv(&x87_of_host_);
        _mm_setcsr(sse_of_host_);
    }

private:
    std::fenv_t x87_of_host_;
    unsigned sse_of_host_ = _mm_getcsr();
};

/// Leaves the thread's error object as a call with that result should: a failure's text, or none. What ADO or a line
/// object left there goes in either case.
void leave_error_object(HRESULT result) noexcept;

/// The HRESULT of the exception being handled; call it inside a `catch (...)` only.
HRESULT result_of_current_exception() noexcept;

/// Runs a body that must not let an exception out.
template <typename Body>
HRESULT guarded(Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return result_of_current_exception();
    }
}

/// Runs a call of a member of the class. What the host has set on its thread for floating-point numbers does not reach
/// it, and no error object of anybody else's is left behind.
template <typename Body>
HRESULT framed_call(Body body) noexcept {
    const FloatingPointExceptionsMasked masked;
    const HRESULT result = guarded(body);
    leave_error_object(result);
    return result;
}

}  // namespace vantlo
