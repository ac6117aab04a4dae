#pragma once

// 128-bit integers for the exact models in tests. They are an extension that 32-bit targets lack: a test that needs
// them stands inside `#ifdef VANTLO_WIDE_INTEGER`.
#ifdef __SIZEOF_INT128__
#define VANTLO_WIDE_INTEGER

namespace vantlo::test {

__extension__ using WideInteger = __int128;

/// The quotient rounded half to even; the divisor is positive.
constexpr WideInteger divided_half_to_even(WideInteger dividend, WideInteger divisor) {
    WideInteger quotient = dividend / divisor;
    WideInteger rest = dividend % divisor;
    if (rest < 0) {  // round down first, so that the rest counts upward
        --quotient;
        rest += divisor;
    }
    const WideInteger twice = 2 * rest;
    return twice > divisor || (twice == divisor && quotient % 2 != 0) ? quotient + 1 : quotient;
}

}  // namespace vantlo::test

#endif
