#pragma once

#include <compare>
#include <cstdint>

namespace vantlo {

/// A fixed-point number with four decimals: automation's Currency, a 64-bit count of ten-thousandths.
///
/// Arithmetic is exact integer arithmetic; results that need more than four decimals round half to even.
/// Errors   a result outside the range raises error::overflow.
class Currency {
public:
    constexpr Currency() = default;

    [[nodiscard]] static constexpr Currency from_ten_thousandths(std::int64_t count) { return Currency(count); }
    [[nodiscard]] static constexpr Currency from_whole(std::int32_t value) { return Currency(value * scale); }

    /// The value whose count of ten-thousandths has this magnitude and sign.
    /// Errors   overflow outside the range.
    [[nodiscard]] static Currency from_magnitude(std::uint64_t ten_thousandths, bool negative);

    /// The exact value of the double, rounded half to even at the fourth decimal.
    /// Errors   overflow outside the range, for infinities and for NaN.
    [[nodiscard]] static Currency from_double(double value);

    [[nodiscard]] constexpr std::int64_t ten_thousandths() const { return count_; }

    /// The count of ten-thousandths without its sign. It exists for the most negative value too.
    [[nodiscard]] constexpr std::uint64_t magnitude() const {
        const auto bits = static_cast<std::uint64_t>(count_);
        return count_ < 0 ? 0 - bits : bits;
    }

    /// The nearest double.
    [[nodiscard]] double to_double() const;

    friend Currency operator*(Currency left, Currency right);
    friend Currency operator-(Currency left, Currency right);
    friend constexpr auto operator<=>(Currency, Currency) = default;

    static constexpr std::int64_t scale = 10000;

private:
    explicit constexpr Currency(std::int64_t count) : count_(count) {}

    std::int64_t count_ = 0;
};

/// The value without its sign. Errors: overflow for the one value whose negative does not fit.
Currency absolute(Currency value);

}  // namespace vantlo
