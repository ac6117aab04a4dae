// Checks the conversions of a Variant against a model that computes with all decimal digits.
//
// An input is a letter that names the type, then the value: its bytes, or UTF-8 for a text.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "automation/error.h"
#include "automation/variant.h"
#include "fuzz/require.h"
#include "support/wide_integer.h"

namespace {

using namespace vantlo;
using fuzz::require;
using test::WideInteger;

/// An exact number: its sign, and its decimal digits on either side of the point.
struct Exact {
    bool negative = false;
    std::string whole;
    std::string fraction;
};

/// The expected outcome of a conversion: an error, or the result as text.
struct Expected {
    ErrorNumber error = 0;
    std::string text;

    friend bool operator==(const Expected&, const Expected&) = default;
};

std::string without_leading_zeros(std::string digits) {
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    return digits.empty() ? "0" : digits;
}

/// Multiplied by a power of ten: the point moves.
Exact shifted(Exact number, long places) {
    if (places > 0) {
        const auto moved = static_cast<std::size_t>(places);
        if (number.fraction.size() < moved) number.fraction.resize(moved, '0');
        number.whole += number.fraction.substr(0, moved);
        number.fraction.erase(0, moved);
    } else {
        const auto moved = static_cast<std::size_t>(-places);
        if (number.whole.size() < moved) number.whole.insert(0, moved - number.whole.size(), '0');
        number.fraction.insert(0, number.whole.substr(number.whole.size() - moved));
        number.whole.erase(number.whole.size() - moved);
    }
    return number;
}

std::string plus_one(std::string digits) {
    std::size_t i = digits.size();
    while (i > 0 && digits[i - 1] == '9') digits[--i] = '0';
    if (i == 0) return "1" + digits;
    ++digits[i - 1];
    return digits;
}

/// Rounded half to even to a whole number, or overflow beyond `highest` and the number one below its negative.
Expected whole(const Exact& number, std::int64_t highest) {
    std::string digits = without_leading_zeros(number.whole);
    std::string rest = number.fraction;
    while (!rest.empty() && rest.back() == '0') rest.pop_back();
    const bool odd = (digits.back() - '0') % 2 == 1;
    if (rest > "5" || (rest == "5" && odd)) digits = plus_one(digits);
    const std::string limit = std::to_string(static_cast<std::uint64_t>(highest) + (number.negative ? 1 : 0));
    if (digits.size() > limit.size() || (digits.size() == limit.size() && digits > limit)) return {error::overflow, {}};
    return {0, (number.negative && digits != "0" ? "-" : "") + digits};
}

template <typename... Values>
std::string printed(const char* format, Values... values) {
    std::array<char, 2048> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, values...);
    return buffer.data();
}

Exact split(std::string digits) {
    const bool negative = digits.front() == '-';
    digits.erase(0, negative ? 1 : 0);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    return {negative, digits.substr(0, point), point < digits.size() ? digits.substr(point + 1) : ""};
}

/// The parts of a number text, without commas and blanks. `for_c` is what strtod reads.
struct NumberText {
    Exact number;
    std::string for_c;
};

std::optional<NumberText> number_in(std::string_view text) {
    while (text.starts_with(' ')) text.remove_prefix(1);
    while (text.ends_with(' ')) text.remove_suffix(1);
    const std::size_t end = std::min(text.find_first_of("EeDd"), text.size());
    std::string mantissa(text.substr(0, end));
    std::string exponent(text.substr(std::min(end + 1, text.size())));
    if (end < text.size() && exponent.empty()) return std::nullopt;

    NumberText read;
    if (mantissa.starts_with('+') || mantissa.starts_with('-')) {
        read.number.negative = mantissa.front() == '-';
        mantissa.erase(0, 1);
    }
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    read.number.fraction = point < mantissa.size() ? mantissa.substr(point + 1) : "";
    const std::string before_point = mantissa.substr(0, point);
    if (before_point.starts_with(',')) return std::nullopt;
    for (const char c : before_point) {
        if (c != ',') read.number.whole += c;
    }
    const std::string digits = read.number.whole + read.number.fraction;
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;

    long power = 0;
    if (end < text.size()) {
        const std::string magnitude = exponent.substr(exponent.starts_with('+') || exponent.starts_with('-') ? 1 : 0);
        if (magnitude.empty() || magnitude.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
        // Beyond this exponent the number is 0 or too large, for any digits of a text of this length.
        power = std::clamp(std::strtol(exponent.c_str(), nullptr, 10), -20'000L, 20'000L);
    }
    read.for_c = (read.number.negative ? "-" : "") + read.number.whole + "." + read.number.fraction + "e" +
                 std::to_string(power);
    read.number = shifted(read.number, power);
    return read;
}

/// The expected conversions of a variant, one for each type.
struct Model {
    ErrorNumber error = 0;  ///< of every numeric conversion
    Exact number;
    bool is_finite = true;
    double nearest = 0;
    Expected text;
};

std::string currency_text(std::int64_t count) {
    const Exact number = shifted(split(std::to_string(count)), -4);
    std::string fraction = number.fraction;
    while (!fraction.empty() && fraction.back() == '0') fraction.pop_back();
    return (number.negative ? "-" : "") + without_leading_zeros(number.whole) +
           (fraction.empty() ? "" : "." + fraction);
}

Model model_of_floating(double value, const char* format) {
    if (!std::isfinite(value)) return {0, {}, false, value, {error::overflow, {}}};
    return {0, split(printed("%.1074f", value)), true, value, {0, value == 0 ? "0" : printed(format, value)}};
}

Model model_of_whole(std::int64_t value) {
    const std::string text = std::to_string(value);
    return {0, split(text), true, static_cast<double>(value), {0, text}};
}

Model model_of_text(const std::string& text) {
    const std::optional<NumberText> read = number_in(text);
    if (!read) return {error::type_mismatch, {}, true, 0, {0, text}};
    return {0, read->number, true, std::strtod(read->for_c.c_str(), nullptr), {0, text}};
}

/// The C library's calendar, for the nearest second; `slack` is added to the time first, in 2^-80 of a second.
Expected date_text(double days, WideInteger slack) {
    const double day = std::trunc(days);
    if (!(day >= -657434 && day <= 2958465)) return {error::invalid_call, {}};
    // 80 bits after the point are all that can tell whether half a second is reached.
    const auto fraction = static_cast<WideInteger>(std::ldexp(std::fabs(days - day), 80));
    const auto second = static_cast<std::int64_t>((fraction * 86400 + slack + (WideInteger{1} << 79)) >> 80);
    const std::time_t time = (static_cast<std::int64_t>(day) - 25569) * 86400 + second;
    std::tm parts{};
    gmtime_r(&time, &parts);
    if (parts.tm_year + 1900 > 9999) return {error::invalid_call, {}};
    const std::string date = printed("%04d-%02d-%02d", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
    const std::string clock = printed("%02d:%02d:%02d", parts.tm_hour, parts.tm_min, parts.tm_sec);
    if (date == "1899-12-30") return {0, clock};
    return {0, clock == "00:00:00" ? date : date + " " + clock};
}

template <typename Convert>
Expected outcome(Convert convert) {
    try {
        return {0, convert()};
    } catch (const Failure& failure) {
        return {failure.number(), {}};
    }
}

void require_equal(const Expected& actual, const Expected& expected, const char* conversion) {
    require(actual == expected, std::string(conversion) + " gives " + std::to_string(actual.error) + " " + actual.text +
                                    ", not " + std::to_string(expected.error) + " " + expected.text);
}

void require_agreement(const Variant& value, const Model& model) {
    const auto as_whole = [&](long places, std::int64_t highest) -> Expected {
        if (model.error != 0) return {model.error, {}};
        if (!model.is_finite) return {error::overflow, {}};
        return whole(shifted(model.number, places), highest);
    };
    require_equal(outcome([&] { return std::to_string(to_currency(value).ten_thousandths()); }), as_whole(4, INT64_MAX),
                  "to_currency");
    require_equal(outcome([&] { return std::to_string(to_integer(value)); }), as_whole(0, INT16_MAX), "to_integer");
    require_equal(outcome([&] { return std::to_string(to_long(value)); }), as_whole(0, INT32_MAX), "to_long");
    require_equal(outcome([&] { return to_utf8(to_text(value)); }), model.text, "to_text");

    Expected nearest{model.error, {}};
    if (model.error == 0 && model.is_finite && std::isinf(model.nearest)) nearest.error = error::overflow;
    if (nearest.error == 0) nearest.text = printed("%a", model.nearest == 0 ? 0.0 : model.nearest);
    require_equal(outcome([&] {
                      const double number = to_double(value);
                      return printed("%a", number == 0 ? 0.0 : number);
                  }),
                  nearest, "to_double");
}

/// `0 - x` has the opposite value, and the type that holds it.
void require_negative(const Variant& value, const Variant& negative) {
    require(zero_minus(value) == negative, "zero_minus of " + to_utf8(to_text(value)));
}

template <typename Number>
Number number_of(std::string_view bytes) {
    std::array<char, sizeof(Number)> raw{};
    std::memcpy(raw.data(), bytes.data(), std::min(bytes.size(), raw.size()));
    Number number;
    std::memcpy(&number, raw.data(), raw.size());
    return number;
}

void check_currency(std::string_view bytes) {
    const auto count = number_of<std::int64_t>(bytes);
    const Currency value = Currency::from_ten_thousandths(count);
    const std::string text = currency_text(count);
    require_agreement(value, {0, split(text), true, std::strtod(text.c_str(), nullptr), {0, text}});
    if (count == INT64_MIN) {
        require_equal(outcome([&] { return to_utf8(to_text(zero_minus(value))); }), {error::overflow, {}},
                      "zero_minus");
    } else {
        require_negative(value, Currency::from_ten_thousandths(-count));
    }
}

void check_product(std::string_view bytes) {
    const auto left = number_of<std::int64_t>(bytes);
    const auto right = number_of<std::int64_t>(bytes.substr(std::min<std::size_t>(8, bytes.size())));
    const WideInteger product = WideInteger{left} * right;
    const WideInteger magnitude = product < 0 ? -product : product;  // below 2^127
    std::string digits;
    for (WideInteger rest = magnitude; rest != 0; rest /= 10)
        digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
    const Exact exact = shifted({product < 0, digits, ""}, -4);
    require_equal(outcome([&] {
                      const Currency result =
                          Currency::from_ten_thousandths(left) * Currency::from_ten_thousandths(right);
                      return std::to_string(result.ten_thousandths());
                  }),
                  whole(exact, INT64_MAX), "product");
}

void check_empty(std::string_view) { require_agreement({}, {0, split("0"), true, 0, {0, ""}}); }

void check_null(std::string_view) {
    require_agreement(Null{}, {error::invalid_use_of_null, {}, true, 0, {error::invalid_use_of_null, {}}});
}

void check_boolean(std::string_view bytes) {
    const bool truth = number_of<std::uint8_t>(bytes) % 2 == 1;
    Model model = model_of_whole(truth ? -1 : 0);
    model.text.text = truth ? "True" : "False";
    require_agreement(truth, model);
}

void check_byte(std::string_view bytes) {
    const auto value = number_of<std::uint8_t>(bytes);
    require_agreement(value, model_of_whole(value));
    require_negative(value, static_cast<std::int16_t>(-value));
}

void check_integer(std::string_view bytes) {
    const auto value = number_of<std::int16_t>(bytes);
    require_agreement(value, model_of_whole(value));
    if (value == INT16_MIN) {
        require_negative(value, std::int32_t{32768});
    } else {
        require_negative(value, static_cast<std::int16_t>(-value));
    }
}

void check_long(std::string_view bytes) {
    const auto value = number_of<std::int32_t>(bytes);
    require_agreement(value, model_of_whole(value));
    if (value == INT32_MIN) {
        require_negative(value, 2147483648.0);
    } else {
        require_negative(value, -value);
    }
}

template <typename Number>
void check_floating(std::string_view bytes) {
    const auto value = number_of<Number>(bytes);
    require_agreement(value, model_of_floating(value, std::is_same_v<Number, float> ? "%.7G" : "%.15G"));
    if (std::isfinite(value)) require_negative(value, -value);
}

void check_date(std::string_view bytes) {
    const auto value = number_of<double>(bytes);
    Model model = model_of_floating(value, "%g");
    // No double is half a second exactly; the one nearest to it may go either way.
    constexpr WideInteger slack = WideInteger{1} << 45;
    const Expected actual = outcome([&] { return to_utf8(to_text(Date{value})); });
    model.text = date_text(value, actual == date_text(value, slack) ? slack : -slack);
    require_agreement(Date{value}, model);
}

void check_text(std::string_view bytes) {
    const std::string text = to_utf8(from_utf8(bytes));
    require_agreement(from_utf8(text), model_of_text(text));
}

void check_other(std::string_view bytes) {
    const std::string text = to_utf8(from_utf8(bytes));
    Model model = model_of_text(text);
    if (text.empty()) model.text = {error::type_mismatch, {}};
    require_agreement(Other{from_utf8(text)}, model);
}

/// What the first byte of an input chooses, and the rest of it is given to.
constexpr std::pair<char, void (*)(std::string_view bytes)> checks[] = {
    {'e', check_empty},   {'n', check_null},     {'b', check_boolean},         {'y', check_byte},
    {'i', check_integer}, {'l', check_long},     {'f', check_floating<float>}, {'d', check_floating<double>},
    {'D', check_date},    {'c', check_currency}, {'p', check_product},         {'t', check_text},
    {'o', check_other},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view rest(reinterpret_cast<const char*>(bytes) + 1, size - 1);
    for (const auto& [letter, check] : checks) {
        if (letter == static_cast<char>(bytes[0])) check(rest);
    }
    return 0;
}
