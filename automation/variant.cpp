#include "automation/variant.h"

#include <cmath>
#include <limits>
#include <optional>

#include "automation/calendar.h"
#include "automation/error.h"
#include "automation/number_text.h"

namespace vantlo {

namespace {

template <typename... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;  // which clang before 17 cannot tell by itself

// Calls `convert` with the number that a value stands for: an int32_t, a double, a Currency, or the text of one.
template <typename Convert>
auto convert_number(const Variant& value, const Convert& convert) {
    using Result = decltype(convert(std::int32_t{}));
    return std::visit(Overloaded{
                          [&](Empty) -> Result { return convert(std::int32_t{0}); },
                          [&](Null) -> Result { throw Failure(error::invalid_use_of_null); },
                          [&](std::uint8_t number) -> Result { return convert(std::int32_t{number}); },
                          [&](std::int16_t number) -> Result { return convert(std::int32_t{number}); },
                          [&](std::int32_t number) -> Result { return convert(number); },
                          [&](float number) -> Result { return convert(double{number}); },
                          [&](double number) -> Result { return convert(number); },
                          [&](Currency number) -> Result { return convert(number); },
                          [&](Date date) -> Result { return convert(date.days); },
                          [&](bool truth) -> Result { return convert(std::int32_t{truth ? -1 : 0}); },
                          [&](const Text& text) -> Result { return convert(TextView(text)); },
                          [&](const Other& other) -> Result { return convert(TextView(other.number)); },
                      },
                      value.value());
}

template <typename Number>
Number numeric(std::optional<Number> number) {
    if (!number) throw Failure(error::type_mismatch);
    return *number;
}

// Rounds half to even without the processor's rounding mode, which belongs to the host.
double rounded(double value) {
    const double magnitude = std::fabs(value);
    const double whole = std::trunc(magnitude);
    const double rest = magnitude - whole;
    const bool up = rest > 0.5 || (rest == 0.5 && std::fmod(whole, 2.0) == 1.0);
    return std::copysign(up ? whole + 1 : whole, value);
}

double rounded(Currency value) {
    constexpr std::uint64_t scale = Currency::scale;
    const std::uint64_t whole = value.magnitude() / scale;
    const std::uint64_t rest = value.magnitude() % scale;
    const bool up = rest > scale / 2 || (rest == scale / 2 && whole % 2 == 1);
    const auto magnitude = static_cast<double>(up ? whole + 1 : whole);  // below 2^53: exact
    return value < Currency() ? -magnitude : magnitude;
}

template <typename Whole>
Whole to_whole(const Variant& value) {
    const double whole =
        convert_number(value, Overloaded{
                                  [](std::int32_t number) { return static_cast<double>(number); },
                                  [](double number) { return rounded(number); },
                                  [](Currency number) { return rounded(number); },
                                  [](TextView text) { return static_cast<double>(numeric(long_from_text(text))); },
                              });
    using Limits = std::numeric_limits<Whole>;
    if (!(whole >= Limits::min() && whole <= Limits::max())) throw Failure(error::overflow);  // NaN compares false
    return static_cast<Whole>(whole);
}

// Errors   overflow for a day that automation's calendar, which begins in the year 100, does not have.
Date negative(Date date) {
    constexpr double day_before_first = -657435;
    if (!(0 - date.days > day_before_first)) throw Failure(error::overflow);
    return Date{0 - date.days};
}

// A number of a type outside the closed set keeps its type: only the sign of its text changes.
Other negative(const Other& other) {
    if (other.number.empty()) throw Failure(error::type_mismatch);
    if (other.number.front() == u'-') return Other{other.number.substr(1)};
    if (numeric(double_from_text(other.number)) == 0) return other;
    return Other{u'-' + other.number};
}

}  // namespace

Currency to_currency(const Variant& value) {
    return convert_number(value, Overloaded{
                                     [](std::int32_t number) { return Currency::from_whole(number); },
                                     [](double number) { return Currency::from_double(number); },
                                     [](Currency number) { return number; },
                                     [](TextView text) { return numeric(currency_from_text(text)); },
                                 });
}

std::int16_t to_integer(const Variant& value) { return to_whole<std::int16_t>(value); }

std::int32_t to_long(const Variant& value) { return to_whole<std::int32_t>(value); }

double to_double(const Variant& value) {
    return convert_number(value, Overloaded{
                                     [](std::int32_t number) { return static_cast<double>(number); },
                                     [](double number) { return number; },
                                     [](Currency number) { return number.to_double(); },
                                     [](TextView text) { return numeric(double_from_text(text)); },
                                 });
}

Text to_text(const Variant& value) {
    return std::visit(Overloaded{
                          [](Empty) { return Text(); },
                          [](Null) -> Text { throw Failure(error::invalid_use_of_null); },
                          [](const Text& text) { return text; },
                          [](bool truth) -> Text { return truth ? u"True" : u"False"; },
                          [](Date date) { return ordinary_text(date); },
                          [](const Other& other) {
                              if (other.number.empty()) throw Failure(error::type_mismatch);
                              return other.number;
                          },
                          [](auto number) { return number_text(number); },
                      },
                      value.value());
}

Variant zero_minus(const Variant& value) {
    return std::visit(Overloaded{
                          [](Empty) { return Variant(std::int16_t{0}); },
                          [](Null) { return Variant(Null()); },
                          [](std::uint8_t number) { return Variant(static_cast<std::int16_t>(-number)); },
                          [](std::int16_t number) {
                              if (number == std::numeric_limits<std::int16_t>::min())
                                  return Variant(-std::int32_t{number});
                              return Variant(static_cast<std::int16_t>(-number));
                          },
                          [](std::int32_t number) {
                              if (number == std::numeric_limits<std::int32_t>::min())
                                  return Variant(-static_cast<double>(number));
                              return Variant(-number);
                          },
                          [](float number) { return Variant(0 - number); },
                          [](double number) { return Variant(0 - number); },
                          [](Currency number) { return Variant(Currency() - number); },
                          [](const Text& text) { return Variant(0 - numeric(double_from_text(text))); },
                          [](Date date) { return Variant(negative(date)); },
                          [](bool truth) { return Variant(static_cast<std::int16_t>(truth ? 1 : 0)); },
                          [](const Other& other) { return Variant(negative(other)); },
                      },
                      value.value());
}

}  // namespace vantlo
