#include "automation/variant.h"

#include <doctest/doctest.h>

#include <cfenv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <type_traits>

#include "automation/error.h"
#include "support/failures.h"
#include "tests/support/printing.h"

namespace vantlo {

namespace {

using test::caught;

TEST_SUITE_BEGIN("[variant]");

Currency units(std::int64_t count) { return Currency::from_ten_thousandths(count); }

constexpr std::uint8_t byte(int value) { return static_cast<std::uint8_t>(value); }
constexpr std::int16_t integer(int value) { return static_cast<std::int16_t>(value); }

const float infinity = std::numeric_limits<float>::infinity();

TEST_CASE("Variant knows a value by its exact type") {
    CHECK(Variant().is<Empty>());
    CHECK(Variant(Null()).is<Null>());
    CHECK(Variant(byte(1)).is<std::uint8_t>());
    CHECK(Variant(integer(1)).is<std::int16_t>());
    CHECK(Variant(1).is<std::int32_t>());
    CHECK(Variant(1.0f).is<float>());
    CHECK(Variant(1.0).is<double>());
    CHECK(Variant(Currency()).is<Currency>());
    CHECK(Variant(Date()).is<Date>());
    CHECK(Variant(true).is<bool>());
    CHECK(Variant(Text(u"x")).is<Text>());
    CHECK(Variant(u"x").is<Text>());
    CHECK(Variant(Other()).is<Other>());
    CHECK_FALSE(Variant(1) == Variant(integer(1)));
    CHECK_FALSE(std::is_constructible_v<Variant, const int*>);
    CHECK_FALSE(std::is_constructible_v<Variant, std::int64_t>);
}

// A value and the result of its conversion: a number, or the error it ends with.
template <typename Result>
struct Row {
    Variant input;
    std::variant<Result, ErrorNumber> expected;
};

template <typename Result>
std::variant<Result, ErrorNumber> gives(Result result) {
    return std::variant<Result, ErrorNumber>(std::in_place_index<0>, std::move(result));
}

template <typename Result>
std::variant<Result, ErrorNumber> fails(ErrorNumber number) {
    return std::variant<Result, ErrorNumber>(std::in_place_index<1>, number);
}

template <typename Result, std::size_t count>
void check_rows(Result (*convert)(const Variant&), const Row<Result> (&rows)[count]) {
    for (std::size_t i = 0; i < count; ++i) {
        const Row<Result>& row = rows[i];
        CAPTURE(i);
        if (row.expected.index() == 0) {
            CHECK(convert(row.input) == std::get<0>(row.expected));
        } else {
            CHECK(caught([&] { return convert(row.input); }).number == std::get<1>(row.expected));
        }
    }
}

TEST_CASE("to_currency converts each type, half to even at the fourth decimal") {
    const auto is = [](std::int64_t count) { return gives(units(count)); };
    const auto error_is = fails<Currency>;
    // clang-format off
    const Row<Currency> rows[] = {
        {Variant(),                            is(0)},
        {Null(),                               error_is(94)},
        {byte(255),                            is(2550000)},
        {integer(-32768),                      is(-327680000)},
        {std::int32_t{INT32_MAX},              is(21474836470000)},
        {2.5f,                                 is(25000)},
        {0.1f,                                 is(1000)},              // 0.100000001490116
        {0.00006f,                             is(1)},
        {16777216.0f,                          is(167772160000)},
        {1e15f,                                error_is(6)},
        {infinity,                             error_is(6)},
        {0.03125,                              is(312)},               // an exact half, to even
        {0.09375,                              is(938)},
        {-0.03125,                             is(-312)},
        {1e300,                                error_is(6)},
        {std::nan(""),                         error_is(6)},
        {units(25000),                         is(25000)},
        {units(INT64_MIN),                     is(INT64_MIN)},
        {Date{45356.75},                       is(453567500)},
        {Date{-1.25},                          is(-12500)},
        {true,                                 is(-10000)},
        {false,                                is(0)},
        {u"2.5",                               is(25000)},
        {u" 1,234.5 ",                         is(12345000)},
        {u"0.00005",                           is(0)},
        {u"0.00015",                           is(2)},
        {u"922337203685477.5807",              is(INT64_MAX)},         // a double in the middle would lose it
        {u"1E15",                              error_is(6)},
        {u"",                                  error_is(13)},
        {u"abc",                               error_is(13)},
        {u"True",                              error_is(13)},
        {Other{u"79228162.51426"},             is(792281625143)},
        {Other{u"79228162514264337593543950335"}, error_is(6)},
        {Other{},                              error_is(13)},
    };
    // clang-format on
    check_rows(to_currency, rows);
}

TEST_CASE("to_integer converts each type, half to even") {
    const auto is = [](int number) { return gives(integer(number)); };
    const auto error_is = fails<std::int16_t>;
    // clang-format off
    const Row<std::int16_t> rows[] = {
        {Variant(),                     is(0)},
        {Null(),                        error_is(94)},
        {byte(255),                     is(255)},
        {integer(-32768),               is(-32768)},
        {std::int32_t{32767},           is(32767)},
        {std::int32_t{32768},           error_is(6)},
        {std::int32_t{-32769},          error_is(6)},
        {0.5f,                          is(0)},
        {1.5f,                          is(2)},
        {2.5f,                          is(2)},
        {-0.5f,                         is(0)},
        {-1.5f,                         is(-2)},
        {-2.5f,                         is(-2)},
        {2.5000002f,                    is(3)},
        {0.49999999999999994,           is(0)},
        {0.50000000000000011,           is(1)},
        {32767.49,                      is(32767)},
        {32767.5,                       error_is(6)},
        {-32768.5,                      is(-32768)},
        {-32768.51,                     error_is(6)},
        {1e300,                         error_is(6)},
        {infinity,                      error_is(6)},
        {std::nan(""),                  error_is(6)},
        {units(5000),                   is(0)},
        {units(15000),                  is(2)},
        {units(25000),                  is(2)},
        {units(25001),                  is(3)},
        {units(-15000),                 is(-2)},
        {units(-25000),                 is(-2)},
        {units(-25001),                 is(-3)},
        {units(327675000),              error_is(6)},
        {units(-327685000),             is(-32768)},
        {units(INT64_MIN),              error_is(6)},
        {Date{2.5},                     is(2)},
        {Date{45356},                   error_is(6)},
        {true,                          is(-1)},
        {false,                         is(0)},
        {u"2.5",                        is(2)},
        {u"3.5",                        is(4)},
        {u" -7 ",                       is(-7)},
        {u"32767.5",                    error_is(6)},
        {u"99999999999",                error_is(6)},
        {u"",                           error_is(13)},
        {u"x",                          error_is(13)},
        {Other{u"2.50000000000000000001"}, is(3)},
        {Other{},                       error_is(13)},
    };
    // clang-format on
    check_rows(to_integer, rows);
}

TEST_CASE("to_long converts each type, half to even") {
    const auto is = [](std::int32_t number) { return gives(number); };
    const auto error_is = [](ErrorNumber number) {
        return std::variant<std::int32_t, ErrorNumber>(std::in_place_index<1>, number);
    };
    // clang-format off
    const Row<std::int32_t> rows[] = {
        {Variant(),                     is(0)},
        {Null(),                        error_is(94)},
        {byte(7),                       is(7)},
        {integer(-7),                   is(-7)},
        {std::int32_t{INT32_MIN},       is(INT32_MIN)},
        {2147483520.0f,                 is(2147483520)},
        {2147483648.0f,                 error_is(6)},
        {-2147483648.0f,                is(INT32_MIN)},
        {0.5,                           is(0)},
        {1.5,                           is(2)},
        {-2.5,                          is(-2)},
        {2147483647.4999998,            is(INT32_MAX)},
        {2147483647.5,                  error_is(6)},
        {-2147483648.5,                 is(INT32_MIN)},
        {-2147483648.5000005,           error_is(6)},
        {std::nan(""),                  error_is(6)},
        {units(21474836474999),         is(INT32_MAX)},
        {units(21474836475000),         error_is(6)},
        {units(-21474836485000),        is(INT32_MIN)},
        {units(-21474836485001),        error_is(6)},
        {Date{45356.75},                is(45357)},
        {Date{-1.25},                   is(-1)},
        {true,                          is(-1)},
        {false,                         is(0)},
        {u"100000",                     is(100000)},
        {u"2147483647.5",               error_is(6)},
        {u"1E10",                       error_is(6)},
        {u"",                           error_is(13)},
        {u"十",                         error_is(13)},
        {Other{u"4294967296"},          error_is(6)},
        {Other{u"-4"},                  is(-4)},
        {Other{},                       error_is(13)},
    };
    // clang-format on
    check_rows(to_long, rows);
}

TEST_CASE("to_double converts each type") {
    const auto is = [](double number) { return gives(number); };
    const auto error_is = fails<double>;
    // clang-format off
    const Row<double> rows[] = {
        {Variant(),                     is(0)},
        {Null(),                        error_is(94)},
        {byte(7),                       is(7)},
        {integer(-7),                   is(-7)},
        {std::int32_t{INT32_MIN},       is(-2147483648.0)},
        {2.1f,                          is(2.0999999046325684)},
        {2.1,                           is(2.1)},
        {units(600),                    is(0.06)},
        {units(INT64_MAX),              is(922337203685477.5807)},
        {Date{-1.25},                   is(-1.25)},
        {true,                          is(-1)},
        {false,                         is(0)},
        {u"0.1",                        is(0.1)},
        {u" 1D2 ",                      is(100)},
        {u"1E309",                      error_is(6)},
        {u"",                           error_is(13)},
        {u"x",                          error_is(13)},
        {Other{u"79228162514264337593543950335"}, is(79228162514264337593543950335.0)},
        {Other{},                       error_is(13)},
    };
    // clang-format on
    check_rows(to_double, rows);
}

TEST_CASE("to_text writes each type") {
    const auto is = [](TextView text) { return gives(Text(text)); };
    const auto error_is = fails<Text>;
    // clang-format off
    const Row<Text> rows[] = {
        {Variant(),                     is(u"")},
        {Null(),                        error_is(94)},
        {byte(255),                     is(u"255")},
        {integer(-7),                   is(u"-7")},
        {std::int32_t{INT32_MIN},       is(u"-2147483648")},
        {2.1f,                          is(u"2.1")},
        {12345678.0f,                   is(u"1.234568E+07")},
        {-0.0f,                         is(u"0")},
        {infinity,                      error_is(6)},
        {0.1,                           is(u"0.1")},
        {-0.0,                          is(u"0")},
        {units(-25000),                 is(u"-2.5")},
        {Date{45356.75},                is(u"2024-03-05 18:00:00")},
        {Date{0.75},                    is(u"18:00:00")},
        {Date{},                        is(u"00:00:00")},
        {Date{1e9},                     error_is(5)},
        {true,                          is(u"True")},
        {false,                         is(u"False")},
        {u"",                           is(u"")},
        {u" 维修 ",                     is(u" 维修 ")},
        {Other{u"1.10"},                is(u"1.10")},
        {Other{},                       error_is(13)},
    };
    // clang-format on
    check_rows(to_text, rows);
}

TEST_CASE("zero_minus subtracts by automation's rules, each type keeping or widening itself") {
    const auto is = [](Variant result) { return gives(std::move(result)); };
    const auto error_is = fails<Variant>;
    // clang-format off
    const Row<Variant> rows[] = {
        {Variant(),                     is(integer(0))},
        {Null(),                        is(Null())},
        {byte(0),                       is(integer(0))},
        {byte(255),                     is(integer(-255))},
        {integer(7),                    is(integer(-7))},
        {integer(32767),                is(integer(-32767))},
        {integer(-32768),               is(std::int32_t{32768})},
        {std::int32_t{7},               is(std::int32_t{-7})},
        {std::int32_t{INT32_MAX},       is(std::int32_t{-INT32_MAX})},
        {std::int32_t{INT32_MIN},       is(2147483648.0)},
        {2.1f,                          is(-2.1f)},
        {-2.1f,                         is(2.1f)},
        {0.0f,                          is(0.0f)},
        {2.1,                           is(-2.1)},
        {0.0,                           is(0.0)},
        {units(25000),                  is(units(-25000))},
        {units(-25000),                 is(units(25000))},
        {units(INT64_MAX),              is(units(-INT64_MAX))},
        {units(INT64_MIN),              error_is(6)},
        {Date{0},                       is(Date{0})},
        {Date{45356.5},                 is(Date{-45356.5})},
        {Date{657434.5},                is(Date{-657434.5})},
        {Date{657435},                  error_is(6)},
        {true,                          is(integer(1))},
        {false,                         is(integer(0))},
        {u"2.5",                        is(-2.5)},
        {u" 1,000 ",                    is(-1000.0)},
        {u"-3",                         is(3.0)},
        {u"1E309",                      error_is(6)},
        {u"",                           error_is(13)},
        {u"abc",                        error_is(13)},
        {Other{u"2.5"},                 is(Other{u"-2.5"})},
        {Other{u"-2.50"},               is(Other{u"2.50"})},
        {Other{u"0.00"},                is(Other{u"0.00"})},
        {Other{u"9223372036854775807"}, is(Other{u"-9223372036854775807"})},
        {Other{},                       error_is(13)},
    };
    // clang-format on
    check_rows(zero_minus, rows);
    CHECK(to_text(zero_minus(0.0f)) == u"0");
    CHECK(to_text(zero_minus(0.0)) == u"0");
}

TEST_CASE("Conversions round half to even whatever rounding mode the host has set") {
    struct RoundingMode {
        explicit RoundingMode(int mode) { std::fesetround(mode); }
        ~RoundingMode() { std::fesetround(FE_TONEAREST); }
        RoundingMode(const RoundingMode&) = delete;
        RoundingMode& operator=(const RoundingMode&) = delete;
    };
    for (const int mode : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO, FE_TONEAREST}) {
        CAPTURE(mode);
        const RoundingMode host(mode);
        CHECK(to_long(2.5) == 2);
        CHECK(to_long(-3.5) == -4);
        CHECK(to_long(2.4) == 2);
        CHECK(to_long(-2.6) == -3);
        CHECK(to_integer(units(25000)) == 2);
        CHECK(to_currency(0.03125) == units(312));
        CHECK(to_currency(0.06) == units(600));
        CHECK(to_currency(-0.00016) == units(-2));
        CHECK(to_text(2.1f) == u"2.1");
        CHECK(to_text(0.1) == u"0.1");
    }
}

TEST_CASE("to_long agrees with the processor's rounding for random doubles") {
    // The default rounding mode, in which this program runs, is half to even.
    std::mt19937_64 random(9);
    for (int i = 0; i < 100000; ++i) {
        const double halves = static_cast<double>(static_cast<std::int32_t>(random()) >> (random() % 31));
        double value = halves / 2;
        if (i % 3 == 0) value = std::nextafter(value, 1e300);
        if (i % 5 == 0) value = std::nextafter(value, -1e300);
        if (i % 7 == 0) value = std::ldexp(static_cast<double>(random() >> 11), -53);
        const double expected = std::nearbyint(value);
        if (to_long(value) != expected) FAIL(value);
        if (std::abs(value) < 32767 && to_integer(value) != expected) FAIL(value);
    }
}

TEST_CASE("to_integer and to_long agree with to_double for random Currency values") {
    std::mt19937_64 random(10);
    for (int i = 0; i < 100000; ++i) {
        // Below 2^40 a half is a half in a double too.
        const std::int64_t count = (static_cast<std::int64_t>(random()) >> 24) >> (random() % 39);
        const Currency value = units(i % 2 == 0 ? count : count / 5000 * 5000);
        const double expected = std::nearbyint(value.to_double());
        if (to_long(value) != expected) FAIL(value.ten_thousandths());
        if (std::abs(expected) < 32767 && to_integer(value) != expected) FAIL(value.ten_thousandths());
    }
}

TEST_SUITE_END();

}  // namespace

}  // namespace vantlo
