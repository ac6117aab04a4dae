#pragma once

#include <compare>

namespace vantlo {

/// A point in time as automation counts it: days since 30 December 1899, the time of day in the fraction.
///
/// Before that day the fraction still counts forward from midnight: -1.25 is 29 December 1899, 06:00.
struct Date {
    double days = 0;

    friend constexpr auto operator<=>(Date, Date) = default;
};

}  // namespace vantlo
