#include "automation/currency.h"

#include <cmath>
#include <limits>

#include "automation/error.h"

namespace vantlo {

namespace {

constexpr std::uint64_t unsigned_scale = Currency::scale;

}  // namespace

Currency Currency::from_magnitude(std::uint64_t ten_thousandths, bool negative) {
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    if (ten_thousandths > largest + (negative ? 1 : 0)) throw Failure(error::overflow);
    return Currency(static_cast<std::int64_t>(negative ? 0 - ten_thousandths : ten_thousandths));
}

Currency Currency::from_double(double value) {
    const double magnitude = std::fabs(value);
    if (!(magnitude < 922337203685478.0)) throw Failure(error::overflow);  // NaN compares false

    // The fraction as a fixed-point number of 68 bits, in two halves, so that the product is exact. A fraction below
    // 2^-15 loses bits, but is less than half a unit with or without them.
    constexpr int bits = 34;
    constexpr std::uint64_t mask = (std::uint64_t{1} << bits) - 1;
    constexpr double two_to_bits = 1ULL << bits;
    const double whole = std::trunc(magnitude);
    const double scaled = (magnitude - whole) * two_to_bits;
    const auto high = static_cast<std::uint64_t>(scaled);
    const auto low = static_cast<std::uint64_t>((scaled - std::trunc(scaled)) * two_to_bits);

    const std::uint64_t low_product = low * unsigned_scale;
    const std::uint64_t high_product = high * unsigned_scale + (low_product >> bits);
    const std::uint64_t rest_high = high_product & mask;
    const std::uint64_t rest_low = low_product & mask;

    std::uint64_t count = static_cast<std::uint64_t>(whole) * unsigned_scale + (high_product >> bits);
    constexpr std::uint64_t half = (mask + 1) / 2;
    const bool is_half = rest_high == half && rest_low == 0;
    if (is_half ? count % 2 == 1 : rest_high >= half) ++count;
    return from_magnitude(count, std::signbit(value));
}

double Currency::to_double() const {
    constexpr std::int64_t exact_in_double = std::int64_t{1} << 53;
    if (count_ >= -exact_in_double && count_ <= exact_in_double) {
        return static_cast<double>(count_) / static_cast<double>(scale);
    }
    // Only the sum's rounding decides. It keeps at most 13 binary places of the fraction, and no fraction of four
    // decimals is so close to a tie of these that the quotient's rounding error could change the result.
    return static_cast<double>(count_ / scale) + static_cast<double>(count_ % scale) / static_cast<double>(scale);
}

Currency operator*(Currency left, Currency right) {
    const std::uint64_t left_whole = left.magnitude() / unsigned_scale;
    const std::uint64_t left_rest = left.magnitude() % unsigned_scale;
    const std::uint64_t right_whole = right.magnitude() / unsigned_scale;
    const std::uint64_t right_rest = right.magnitude() % unsigned_scale;

    // (lw + lr/s)(rw + rr/s) in units of 1/s. The mixed terms and the last term fit in 64 bits. All terms are positive,
    // so a sum that does not fit is out of range.
    std::uint64_t count = 0;
    const std::uint64_t rest_product = left_rest * right_rest;
    if (__builtin_mul_overflow(left_whole, right_whole, &count) ||
        __builtin_mul_overflow(count, unsigned_scale, &count) ||
        __builtin_add_overflow(count, left_whole * right_rest, &count) ||
        __builtin_add_overflow(count, left_rest * right_whole, &count) ||
        __builtin_add_overflow(count, rest_product / unsigned_scale, &count)) {
        throw Failure(error::overflow);
    }
    const std::uint64_t rest = rest_product % unsigned_scale;
    if (rest > unsigned_scale / 2 || (rest == unsigned_scale / 2 && count % 2 == 1)) {
        if (__builtin_add_overflow(count, std::uint64_t{1}, &count)) throw Failure(error::overflow);
    }
    return Currency::from_magnitude(count, (left.count_ < 0) != (right.count_ < 0));
}

Currency operator-(Currency left, Currency right) {
    std::int64_t count = 0;
    if (__builtin_sub_overflow(left.count_, right.count_, &count)) throw Failure(error::overflow);
    return Currency(count);
}

Currency absolute(Currency value) { return Currency::from_magnitude(value.magnitude(), false); }

}  // namespace vantlo
