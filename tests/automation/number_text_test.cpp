#include "automation/number_text.h"

#include <doctest/doctest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "automation/error.h"
#include "support/failures.h"
#include "support/wide_integer.h"
#include "tests/support/printing.h"

namespace vantlo {

namespace {

using test::caught;

TEST_SUITE_BEGIN("[number]");

constexpr int random_cases = 100000;
constexpr double infinity = std::numeric_limits<double>::infinity();

Currency units(std::int64_t count) { return Currency::from_ten_thousandths(count); }

TEST_CASE("number_text writes whole numbers") {
    CHECK(number_text(std::int32_t{0}) == u"0");
    CHECK(number_text(std::int32_t{7}) == u"7");
    CHECK(number_text(std::int32_t{-1}) == u"-1");
    CHECK(number_text(INT32_MAX) == u"2147483647");
    CHECK(number_text(INT32_MIN) == u"-2147483648");
    CHECK(number_text(std::int16_t{-32768}) == u"-32768");
    CHECK(number_text(std::uint8_t{255}) == u"255");
}

TEST_CASE("number_text writes a Single with up to 7 significant digits") {
    struct Row {
        float input;
        TextView expected;
    };
    // clang-format off
    const Row rows[] = {
        {0.0f,             u"0"},
        {-0.0f,            u"0"},
        {1.0f,             u"1"},
        {-1.0f,            u"-1"},
        {2.5f,             u"2.5"},
        {0.1f,             u"0.1"},
        {-0.5f,            u"-0.5"},
        {2.1f,             u"2.1"},
        {12.0f,            u"12"},
        {100.0f,           u"100"},
        {1.0f / 3,         u"0.3333333"},
        {2.0f / 3,         u"0.6666667"},
        {1234567.0f,       u"1234567"},
        {9999999.0f,       u"9999999"},
        {10000000.0f,      u"1E+07"},
        {12345678.0f,      u"1.234568E+07"},
        {-12345678.0f,     u"-1.234568E+07"},
        {1234567.9f,       u"1234568"},
        {16777216.0f,      u"1.677722E+07"},
        {99999.995f,       u"99999.99"},
        {999999.95f,       u"999999.9"},
        {0.001f,           u"0.001"},
        {0.0001f,          u"0.0001"},
        {0.00012345678f,   u"0.0001234568"},
        {0.00001f,         u"1E-05"},
        {0.000012345f,     u"1.2345E-05"},
        {0.00006f,         u"6E-05"},
        {0.00009999999f,   u"9.999999E-05"},
        {0.000099999999f,  u"0.0001"},
        {1e10f,            u"1E+10"},
        {1e-10f,           u"1E-10"},
        {3.4028235e38f,    u"3.402823E+38"},
        {1.17549435e-38f,  u"1.175494E-38"},
        {1e-45f,           u"1.401298E-45"},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(number_text(row.input) == row.expected);
    }
}

TEST_CASE("number_text writes a Double with up to 15 significant digits") {
    struct Row {
        double input;
        TextView expected;
    };
    // clang-format off
    const Row rows[] = {
        {0.0,                     u"0"},
        {-0.0,                    u"0"},
        {2.5,                     u"2.5"},
        {-2.5,                    u"-2.5"},
        {0.1,                     u"0.1"},
        {0.1 + 0.2,               u"0.3"},
        {1.0 / 3,                 u"0.333333333333333"},
        {2.0 / 3,                 u"0.666666666666667"},
        {10000000.0,              u"10000000"},
        {123456789.12345,         u"123456789.12345"},
        {123456789012345.0,       u"123456789012345"},
        {999999999999999.0,       u"999999999999999"},
        {1e15,                    u"1E+15"},
        {1234567890123456.0,      u"1.23456789012346E+15"},
        {0.0001,                  u"0.0001"},
        {0.00001,                 u"1E-05"},
        {0.000123456789012345,    u"0.000123456789012345"},
        {double{2.1f},            u"2.09999990463257"},
        {1e100,                   u"1E+100"},
        {1e-100,                  u"1E-100"},
        {1.7976931348623157e308,  u"1.79769313486232E+308"},
        {-1.7976931348623157e308, u"-1.79769313486232E+308"},
        {5e-324,                  u"4.94065645841247E-324"},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(number_text(row.input) == row.expected);
    }
}

TEST_CASE("number_text refuses infinity and NaN") {
    for (const double value : {infinity, -infinity, std::nan("")}) {
        CHECK(caught([&] { return number_text(value); }).number == error::overflow);
        CHECK(caught([&] { return number_text(static_cast<float>(value)); }).number == error::overflow);
    }
}

TEST_CASE("number_text writes a Currency with at most four decimals") {
    struct Row {
        std::int64_t count;
        TextView expected;
    };
    // clang-format off
    const Row rows[] = {
        {0,          u"0"},
        {1,          u"0.0001"},
        {-1,         u"-0.0001"},
        {10,         u"0.001"},
        {100,        u"0.01"},
        {1000,       u"0.1"},
        {5000,       u"0.5"},
        {10000,      u"1"},
        {25000,      u"2.5"},
        {-25000,     u"-2.5"},
        {10010,      u"1.001"},
        {10203,      u"1.0203"},
        {123456,     u"12.3456"},
        {100000000,  u"10000"},
        {INT64_MAX,  u"922337203685477.5807"},
        {INT64_MIN,  u"-922337203685477.5808"},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.count);
        CHECK(number_text(units(row.count)) == row.expected);
        CHECK(currency_from_text(row.expected) == units(row.count));
    }
}

struct NumberRow {
    TextView input;
    double as_double;
    std::int64_t as_count;
    std::int32_t as_long;
};

TEST_CASE("Texts are read by automation's number syntax") {
    // clang-format off
    const NumberRow rows[] = {
        {u"0",                   0,              0,                 0},
        {u"-0",                  0,              0,                 0},
        {u"000",                 0,              0,                 0},
        {u"0.000",               0,              0,                 0},
        {u"0E5",                 0,              0,                 0},
        {u"0E999999999999999999999", 0,          0,                 0},
        {u"12",                  12,             120000,            12},
        {u"+12",                 12,             120000,            12},
        {u"-12",                 -12,            -120000,           -12},
        {u"  12  ",              12,             120000,            12},
        {u" -12 ",               -12,            -120000,           -12},
        {u"0012",                12,             120000,            12},
        {u"12.",                 12,             120000,            12},
        {u".5",                  0.5,            5000,              0},
        {u"-.5",                 -0.5,           -5000,             0},
        {u"0.06",                0.06,           600,               0},
        {u"1,234",               1234,           12340000,          1234},
        {u"1,234,567.5",         1234567.5,      12345675000,       1234568},
        {u"1,2,3",               123,            1230000,           123},
        {u"1,,2",                12,             120000,            12},
        {u"1,.5",                1.5,            15000,             2},
        {u"0,5",                 5,              50000,             5},
        {u"1E3",                 1000,           10000000,          1000},
        {u"1e3",                 1000,           10000000,          1000},
        {u"1D3",                 1000,           10000000,          1000},
        {u"1d+3",                1000,           10000000,          1000},
        {u"1E+003",              1000,           10000000,          1000},
        {u"25E-1",               2.5,            25000,             2},
        {u"-25e-1",              -2.5,           -25000,            -2},
        {u".5E1",                5,              50000,             5},
        {u"5.E0",                5,              50000,             5},
        {u"6E-05",               0.00006,        1,                 0},
        {u"100E-2",              1,              10000,             1},
        {u"0.00001E5",           1,              10000,             1},
        {u"1E-400",              0,              0,                 0},
        {u"1E-999999999999999999999", 0,         0,                 0},
        {u"1.7976931348623157E-308", 1.7976931348623157e-308, 0,    0},
        {u"5E-324",              5e-324,         0,                 0},
        {u"2147483647",          2147483647.0,   21474836470000,    INT32_MAX},
        {u"-2147483648",         -2147483648.0,  -21474836480000,   INT32_MIN},
        {u"123456789.12345",     123456789.12345, 1234567891234,    123456789},
        {u"0.50000000000000000000000000000001", 0.5, 5000,          1},
    };
    // clang-format on
    for (const NumberRow& row : rows) {
        CAPTURE(row.input);
        CHECK(double_from_text(row.input) == row.as_double);
        CHECK(currency_from_text(row.input) == units(row.as_count));
        CHECK(long_from_text(row.input) == row.as_long);
    }
    CHECK_FALSE(std::signbit(double_from_text(u"-0").value()));
}

TEST_CASE("Texts that are no number are told from those that are") {
    const TextView rows[] = {u"",     u" ",    u"abc", u"-",    u"+",     u".",     u"-.",    u",",    u",1",
                             u"- 1",  u"--1",  u"+-1", u"1-",   u"1 2",   u"1.2.3", u"1.2,3", u".1,2", u"1E",
                             u"1E+",  u"1E 5", u"E5",  u".E5",  u"1F5",   u"1E5.",  u"1E5E",  u"1EE5", u"0x10",
                             u"&H10", u"1a",   u"NaN", u"inf",  u"1\t",   u"\t1",   u"１２",  u"十二", u"1\u3000",
                             u"1元",  u"¥1",   u"(1)", u"true", u"1E+-5", u"1e5,0", u"1E5 0", u"1;2"};
    for (const TextView text : rows) {
        CAPTURE(text);
        CHECK_FALSE(double_from_text(text).has_value());
        CHECK_FALSE(currency_from_text(text).has_value());
        CHECK_FALSE(long_from_text(text).has_value());
    }
    const TextView with_nul(u"1\0", 2);
    CHECK_FALSE(double_from_text(with_nul).has_value());
}

TEST_CASE("currency_from_text rounds half to even and fails beyond the range") {
    struct Row {
        TextView input;
        std::int64_t expected;
    };
    // clang-format off
    const Row rows[] = {
        {u"0.00005",                       0},
        {u"0.00015",                       2},
        {u"0.00025",                       2},
        {u"0.00035",                       4},
        {u"-0.00005",                      0},
        {u"-0.00015",                      -2},
        {u"0.000050000000000000000000001", 1},
        {u"0.00004999999999999999999999",  0},
        {u"0.000050000000000000000000000", 0},
        {u"0.000009",                      0},
        {u"5E-5",                          0},
        {u"6E-5",                          1},
        {u"9E-6",                          0},
        {u"0.99995",                       10000},
        {u"0.99985",                       9998},
        {u"9.99995",                       100000},
        {u"922337203685477.5807",          INT64_MAX},
        {u"922337203685477.58074",         INT64_MAX},
        {u"922337203685477.5806500000",    9223372036854775806},
        {u"9.223372036854775807E14",       INT64_MAX},
        {u"-922337203685477.5808",         INT64_MIN},
        {u"-922337203685477.58085",        INT64_MIN},
        {u"922,337,203,685,477.5807",      INT64_MAX},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(currency_from_text(row.input) == units(row.expected));
    }
    for (const TextView text : {u"922337203685477.5808", u"922337203685477.58075", u"-922337203685477.5809",
                                u"-922337203685477.58085000001", u"999999999999999.9999", u"999999999999999.99999",
                                u"1000000000000000", u"1844674407370955.1616", u"1E15", u"1E300", u"-1E999999999999"}) {
        CAPTURE(TextView(text));
        CHECK(caught([&] { return currency_from_text(text); }).number == error::overflow);
    }
}

TEST_CASE("long_from_text rounds half to even and fails beyond the range") {
    struct Row {
        TextView input;
        std::int32_t expected;
    };
    // clang-format off
    const Row rows[] = {
        {u"0.5",                           0},
        {u"1.5",                           2},
        {u"2.5",                           2},
        {u"-0.5",                          0},
        {u"-1.5",                          -2},
        {u"2.50000000000000000000000001",  3},
        {u"2.4999999999999999999999999",   2},
        {u"0.05E1",                        0},
        {u"0.09",                          0},
        {u"2147483647.49",                 INT32_MAX},
        {u"-2147483648.5",                 INT32_MIN},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(long_from_text(row.input) == row.expected);
    }
    for (const TextView text : {u"2147483647.5", u"2147483648", u"-2147483648.51", u"-2147483649", u"1E19", u"1E20",
                                u"18446744073709551616", u"1E999999999999"}) {
        CAPTURE(TextView(text));
        CHECK(caught([&] { return long_from_text(text); }).number == error::overflow);
    }
}

TEST_CASE("double_from_text reads the nearest double and fails beyond the range") {
    CHECK(double_from_text(u"1.7976931348623157E308") == std::numeric_limits<double>::max());
    CHECK(double_from_text(u"2.2250738585072011E-308") == 2.2250738585072011e-308);
    CHECK(double_from_text(u"9007199254740993") == 9007199254740992.0);
    CHECK(double_from_text(u"9007199254740993.0000000000000000000000000000001") == 9007199254740994.0);
    CHECK(double_from_text(Text(400, u'1') + u"E-400") == 0.1111111111111111111);
    CHECK(double_from_text(u"0." + Text(400, u'0') + u"25E401") == 2.5);
    CHECK(double_from_text(u"25" + Text(400, u'0') + u"E-401") == 2.5);
    for (const TextView text : {u"1.8E308", u"-1.8E308", u"1E309", u"1E999999999999999999999"}) {
        CAPTURE(TextView(text));
        CHECK(caught([&] { return double_from_text(text); }).number == error::overflow);
    }
    CHECK(caught([] { return double_from_text(Text(400, u'9')); }).number == error::overflow);
}

// The C library's general format in the C locale, which is where this program runs.
template <typename Floating>
Text printed(Floating value, int digits) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.*G", digits, static_cast<double>(value));
    return from_utf8(buffer);
}

TEST_CASE("number_text agrees with the C library for random bit patterns") {
    std::mt19937_64 random(5);
    for (int i = 0; i < random_cases; ++i) {
        const auto single = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        const auto wide = std::bit_cast<double>(random());
        if (std::isfinite(single) && number_text(single) != printed(single, 7)) FAIL(single);
        if (std::isfinite(wide) && number_text(wide) != printed(wide, 15)) FAIL(wide);
        // Numbers as bills have them, which are mostly written without an exponent.
        const double everyday = static_cast<double>(static_cast<std::int64_t>(random()) >> (random() % 64)) / 10000;
        if (everyday == 0) continue;
        if (number_text(everyday) != printed(everyday, 15)) FAIL(everyday);
        const auto everyday_single = static_cast<float>(everyday);
        if (number_text(everyday_single) != printed(everyday_single, 7)) FAIL(everyday);
    }
}

TEST_CASE("double_from_text agrees with the C library for random texts of 17 digits") {
    std::mt19937_64 random(6);
    for (int i = 0; i < random_cases; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isfinite(value)) continue;
        const Text text = printed(value, 17);
        if (double_from_text(text) != std::strtod(to_utf8(text).c_str(), nullptr)) FAIL(value);
        if (double_from_text(text) != value) FAIL(value);
    }
}

TEST_CASE("Currency goes to text and back for random values") {
    std::mt19937_64 random(7);
    for (int i = 0; i < random_cases; ++i) {
        const Currency value = units(static_cast<std::int64_t>(random()) >> (random() % 64));
        if (currency_from_text(number_text(value)) != value) FAIL(value.ten_thousandths());
    }
}

#ifdef VANTLO_WIDE_INTEGER

TEST_CASE("currency_from_text agrees with 128-bit arithmetic for random decimal texts") {
    using test::divided_half_to_even;
    using test::WideInteger;

    std::mt19937_64 random(8);
    for (int i = 0; i < random_cases; ++i) {
        const std::int64_t scaled = static_cast<std::int64_t>(random()) >> (random() % 64);
        const int decimals = static_cast<int>(random() % 19);
        // Where the last digits are 5, 50, 500 …, half to even is what decides.
        const std::int64_t digits = i % 2 == 0 ? scaled : scaled / 1000 * 1000 + (scaled < 0 ? -500 : 500);
        const std::string text = std::to_string(digits) + "E-" + std::to_string(decimals);

        WideInteger ten_to_decimals = 1;
        for (int j = 0; j < decimals; ++j) ten_to_decimals *= 10;
        const WideInteger expected = divided_half_to_even(WideInteger{digits} * 10000, ten_to_decimals);
        if (expected < INT64_MIN || expected > INT64_MAX) {
            if (caught([&] { return currency_from_text(from_utf8(text)); }).number != error::overflow) FAIL(text);
        } else if (currency_from_text(from_utf8(text)) != units(static_cast<std::int64_t>(expected))) {
            FAIL(text);
        }
    }
}

#endif  // VANTLO_WIDE_INTEGER

TEST_CASE("Numbers are written and read with a point whatever the locale") {
    // Of these names, the first that this system has. Without one the checks run in the C locale, and say so.
    std::string locale = "C";
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "German_Germany.1252"}) {
        if (std::setlocale(LC_ALL, name) != nullptr) {
            locale = name;
            break;
        }
    }
    MESSAGE("under the locale ", locale);
    CHECK(number_text(2.5) == u"2.5");
    CHECK(number_text(2.5f) == u"2.5");
    CHECK(number_text(units(25000)) == u"2.5");
    CHECK(number_text(1234567) == u"1234567");
    CHECK(double_from_text(u"2.5") == 2.5);
    std::setlocale(LC_ALL, "C");
}

TEST_SUITE_END();

}  // namespace

}  // namespace vantlo
