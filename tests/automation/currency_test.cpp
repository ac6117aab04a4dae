#include "automation/currency.h"

#include <doctest/doctest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <string>

#include "automation/error.h"
#include "support/failures.h"
#include "support/wide_integer.h"
#include "tests/support/printing.h"

namespace vantlo {

namespace {

using test::caught;

TEST_SUITE_BEGIN("[currency]");

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr int random_cases = 100000;

constexpr Currency units(std::int64_t count) { return Currency::from_ten_thousandths(count); }

// A count of any size up to 64 bits, small ones as likely as large ones.
std::int64_t random_count(std::mt19937_64& random) {
    const auto shift = static_cast<int>(random() % 64);
    return static_cast<std::int64_t>(random()) >> shift;
}

TEST_CASE("Currency counts ten-thousandths") {
    CHECK(Currency().ten_thousandths() == 0);
    CHECK(Currency::from_whole(12).ten_thousandths() == 120000);
    CHECK(Currency::from_whole(-1).ten_thousandths() == -10000);
    CHECK(Currency::from_whole(INT32_MAX).ten_thousandths() == 21474836470000);
    CHECK(Currency::from_whole(INT32_MIN).ten_thousandths() == -21474836480000);
    CHECK(units(-5) < units(3));
    CHECK(units(lowest).magnitude() == 9223372036854775808u);
    CHECK(units(-7).magnitude() == 7);
    CHECK(units(7).magnitude() == 7);
}

TEST_CASE("Currency::from_magnitude covers the range, its lowest value too") {
    constexpr std::uint64_t limit = 9223372036854775808u;
    CHECK(Currency::from_magnitude(0, true) == units(0));
    CHECK(Currency::from_magnitude(5, true) == units(-5));
    CHECK(Currency::from_magnitude(limit - 1, false) == units(highest));
    CHECK(Currency::from_magnitude(limit, true) == units(lowest));
    CHECK(caught([] { return Currency::from_magnitude(limit, false); }).number == error::overflow);
    CHECK(caught([] { return Currency::from_magnitude(limit + 1, true); }).number == error::overflow);
}

TEST_CASE("Currency::from_double rounds the double's exact value half to even at the fourth decimal") {
    struct Row {
        double input;
        std::int64_t expected;
    };
    // clang-format off
    const Row rows[] = {
        {0.0,                      0},
        {-0.0,                     0},
        {2.5,                      25000},
        {-2.5,                     -25000},
        {0.1,                      1000},
        {0.06,                     600},
        {1e-300,                   0},
        {-1e-300,                  0},
        {5e-324,                   0},
        {0.000030517578125,        0},          // 2^-15
        {0.0000499,                0},
        {0.00005,                  1},          // the double nearest to 0.00005 lies above it
        {0.00015,                  1},          // the double nearest to 0.00015 lies below it
        {0.00025,                  3},          // above
        {-0.00005,                 -1},
        {0.03125,                  312},        // exact halves: even
        {0.09375,                  938},
        {0.15625,                  1562},
        {-0.03125,                 -312},
        {-0.09375,                 -938},
        {1.03125,                  10312},
        {0.031250000000000007,     313},        // the next double after an exact half
        {0.031249999999999997,     312},
        {0.09375000000000001,      938},
        {0.09374999999999999,      937},
        {0.99995,                  10000},      // above the half
        {0.99994999999999989,      9999},
        {1.00015,                  10002},      // above
        {2.00005,                  20000},      // below
        {123456789.12345,          1234567891234},   // below
        {922337203685477.5,        9223372036854775000},
        {-922337203685477.5,       -9223372036854775000},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(Currency::from_double(row.input) == units(row.expected));
    }
}

TEST_CASE("Currency::from_double refuses what is out of range or no number") {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double input : {922337203685477.625, 922337203685478.0, 1e15, 1e300, infinity, std::nan("")}) {
        CAPTURE(input);
        CHECK(caught([&] { return Currency::from_double(input); }).number == error::overflow);
        CHECK(caught([&] { return Currency::from_double(-input); }).number == error::overflow);
    }
}

TEST_CASE("A product taken in double precision is rounded once") {
    struct Row {
        std::int64_t factor;
        float quantity;
        std::int64_t expected;
    };
    // clang-format off
    const Row rows[] = {
        {10000000,   0.00006f,   600},         // 0.00006 of a unit of 1000 is 0.06
        {10000,      2.5f,       25000},
        {120000,     2.0f,       240000},
        {5000,       3.0f,       15000},
        {120000,     0.1f,       12000},       // 1.2000000178813934
        {3333,       3.0f,       9999},
        {10000,      -2.5f,      -25000},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.quantity);
        const double product = units(row.factor).to_double() * double{row.quantity};
        CHECK(Currency::from_double(product) == units(row.expected));
    }
}

struct PairRow {
    std::int64_t left, right;
    std::optional<std::int64_t> expected;
};

TEST_CASE("Currency times Currency is exact and rounds half to even") {
    // clang-format off
    const PairRow rows[] = {
        {0,             lowest,         0},
        {20000,         120000,         240000},                     // 2 * 12
        {20000,         5000,           10000},                      // 2 * 0.5
        {-20000,        120000,         -240000},
        {-20000,        -120000,        240000},
        {1,             1,              0},                          // 0.00000001
        {1,             5000,           0},                          // half of 0.0001: to even
        {3,             5000,           2},                          // 1.5 becomes 2
        {5,             5000,           2},                          // 2.5 becomes 2
        {7,             5000,           4},
        {-1,            5000,           0},
        {-3,            5000,           -2},
        {-5,            5000,           -2},
        {-5,            -5000,          2},
        {1,             5001,           1},
        {1,             4999,           0},
        {5,             25000,          12},                         // 12.5
        {15,            25000,          38},                         // 37.5
        {100005,        10005,          100055},                     // 100055.0025
        {12345678,      87654321,       108215202237},               // 108215202237.4638 units
        {10000,         highest,        highest},
        {10000,         lowest,         lowest},
        {-10000,        highest,        -highest},
        {-10000,        lowest,         std::nullopt},
        {9999,          lowest,         -9222449699651090330},       // ...329.9232
        {10001,         highest,        std::nullopt},
        {10001,         lowest,         std::nullopt},
        {5000,          lowest,         lowest / 2},
        {-5000,         lowest,         -(lowest / 2)},
        {20000,         lowest / 2,     lowest},
        {-20000,        lowest / 2,     std::nullopt},
        {20000,         highest / 2,    highest - 1},
        {20000,         highest / 2 + 1, std::nullopt},
        {-20000,        highest / 2 + 1, lowest},
        {1,             lowest,         -922337203685478},           // ...477.5808
        {lowest,        lowest,         std::nullopt},
        {highest,       highest,        std::nullopt},
        {highest,       lowest,         std::nullopt},
        {303700049997,  303700049997,   9223372036818029970},        // the last square that fits
        {303700049998,  303700049997,   9223372036848399975},
        {303700049998,  303700049998,   std::nullopt},
        {961425548,     191868669519791,    std::nullopt},           // beyond 64 bits with the second mixed term,
        {244272509,     755170696417154,    std::nullopt},           // only with the product of both fractions,
        {665300788,     277269235305784,    std::nullopt},           // only by rounding
    };
    // clang-format on
    for (const PairRow& row : rows) {
        CAPTURE(row.left);
        CAPTURE(row.right);
        if (row.expected) {
            CHECK(units(row.left) * units(row.right) == units(*row.expected));
            CHECK(units(row.right) * units(row.left) == units(*row.expected));
        } else {
            CHECK(caught([&] { return units(row.left) * units(row.right); }).number == error::overflow);
            CHECK(caught([&] { return units(row.right) * units(row.left); }).number == error::overflow);
        }
    }
}

TEST_CASE("Currency minus Currency is exact") {
    // clang-format off
    const PairRow rows[] = {
        {0,         25000,      -25000},
        {10000,     1,          9999},
        {-1,        -1,         0},
        {0,         highest,    -highest},
        {0,         lowest,     std::nullopt},
        {-1,        lowest,     highest},
        {-1,        highest,    lowest},
        {-2,        highest,    std::nullopt},
        {highest,   -1,         std::nullopt},
        {highest,   highest,    0},
        {lowest,    lowest,     0},
        {lowest,    1,          std::nullopt},
    };
    // clang-format on
    for (const PairRow& row : rows) {
        CAPTURE(row.left);
        CAPTURE(row.right);
        if (row.expected) {
            CHECK(units(row.left) - units(row.right) == units(*row.expected));
        } else {
            CHECK(caught([&] { return units(row.left) - units(row.right); }).number == error::overflow);
        }
    }
}

TEST_CASE("absolute drops the sign") {
    CHECK(absolute(units(-25000)) == units(25000));
    CHECK(absolute(units(25000)) == units(25000));
    CHECK(absolute(units(0)) == units(0));
    CHECK(absolute(units(lowest + 1)) == units(highest));
    CHECK(caught([] { return absolute(units(lowest)); }).number == error::overflow);
}

// The double nearest to a count, read from its decimal text.
double nearest_double(std::int64_t count) {
    const std::string text = std::to_string(count) + "e-4";
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

TEST_CASE("Currency::to_double gives the nearest double") {
    constexpr std::int64_t exact = std::int64_t{1} << 53;
    for (const std::int64_t count :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{600}, std::int64_t{25000}, exact - 1, exact,
          exact + 1, exact + 2, exact + 3, -exact - 1, -exact - 3, highest, highest - 1, lowest, lowest + 1}) {
        CAPTURE(count);
        CHECK(units(count).to_double() == nearest_double(count));
    }
}

TEST_CASE("Currency::to_double gives the nearest double for random values, and small ones come back") {
    std::mt19937_64 random(1);
    for (int i = 0; i < random_cases; ++i) {
        const std::int64_t count = random_count(random);
        const double value = units(count).to_double();
        if (value != nearest_double(count)) FAIL(count);
        // Fifteen digits always survive a double.
        const bool comes_back = std::abs(value) > 1e11 || Currency::from_double(value) == units(count);
        if (!comes_back) FAIL(count);
    }
}

#ifdef VANTLO_WIDE_INTEGER

using test::divided_half_to_even;
using test::WideInteger;

// The count as a Currency holds it, or nothing where it does not fit.
std::optional<std::int64_t> fitted(WideInteger count) {
    if (count < lowest || count > highest) return std::nullopt;
    return static_cast<std::int64_t>(count);
}

// What a computation gives: a count, or nothing where it overflows; another failure fails the test.
template <typename Computation>
std::optional<std::int64_t> outcome(Computation&& computation) {
    try {
        return computation().ten_thousandths();
    } catch (const Failure& failure) {
        REQUIRE(failure.number() == error::overflow);
        return std::nullopt;
    }
}

TEST_CASE("Currency products and differences agree with 128-bit arithmetic for random values") {
    std::mt19937_64 random(2);
    int overflows = 0;
    for (int i = 0; i < random_cases; ++i) {
        const std::int64_t left = random_count(random);
        const std::int64_t right = i % 4 == 0 ? 5000 * (random_count(random) >> 48) : random_count(random);
        const auto product = fitted(divided_half_to_even(WideInteger{left} * right, 10000));
        const auto difference = fitted(WideInteger{left} - right);
        if (outcome([&] { return units(left) * units(right); }) != product) FAIL(left, " * ", right);
        if (outcome([&] { return units(left) - units(right); }) != difference) FAIL(left, " - ", right);
        overflows += product ? 0 : 1;
    }
    CHECK(overflows > random_cases / 20);
    CHECK(overflows < random_cases / 2);
}

TEST_CASE("Currency products agree with 128-bit arithmetic beside the limits") {
    std::mt19937_64 random(3);
    for (int i = 0; i < random_cases; ++i) {
        // The right operand is about the limit divided by the left one, so that about half of the products fit.
        const std::int64_t left = random_count(random);
        if (left > -2 && left < 2) continue;
        const WideInteger limit = WideInteger{i % 2 == 0 ? lowest : highest} * 10000;
        const auto right = fitted(limit / left + static_cast<int>(random() % 5) - 2);
        if (!right) continue;
        const auto product = fitted(divided_half_to_even(WideInteger{left} * *right, 10000));
        if (outcome([&] { return units(left) * units(*right); }) != product) FAIL(left, " * ", *right);
    }
}

// The exact value of a double below 2^63, in ten-thousandths, rounded half to even: its 53 bits as an integer.
WideInteger exact_count(double value) {
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent);
    const auto mantissa = static_cast<std::int64_t>(std::ldexp(fraction, 53));
    const WideInteger count = WideInteger{mantissa} * 10000;
    const int shift = 53 - exponent;
    if (shift <= 0) return count << -shift;
    if (shift > 100) return 0;  // below a half: the count has 67 bits
    return divided_half_to_even(count, WideInteger{1} << shift);
}

TEST_CASE("Currency::from_double agrees with 128-bit arithmetic for random doubles") {
    std::mt19937_64 random(4);
    for (int i = 0; i < random_cases; ++i) {
        double value = 0;
        if (i % 3 == 0) {  // any mantissa, any exponent from far below a ten-thousandth to the limit
            const auto mantissa = static_cast<double>(static_cast<std::int64_t>(random()) >> 11);
            value = std::ldexp(mantissa, static_cast<int>(random() % 90) - 92);
        } else if (i % 3 ==
                   1) {  // the doubles at and beside an exact half: an odd multiple of 1/32 up to 5 binary places
            const auto halves = static_cast<double>(random_count(random) >> 14);
            value = std::ldexp(halves, -5);
        } else {  // the doubles nearest to a decimal half
            value = (static_cast<double>(random_count(random) >> 14) + 0.5) / 10000;
        }
        if (i % 5 == 0) value = std::nextafter(value, 1e300);
        if (i % 7 == 0) value = std::nextafter(value, -1e300);
        if (std::abs(value) > 9e18) continue;
        if (outcome([&] { return Currency::from_double(value); }) != fitted(exact_count(value))) {
            FAIL(std::bit_cast<std::uint64_t>(value), " = ", value);
        }
    }
}

#endif  // VANTLO_WIDE_INTEGER

TEST_SUITE_END();

}  // namespace

}  // namespace vantlo
