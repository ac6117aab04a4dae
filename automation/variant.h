#pragma once

#include <cstdint>
#include <utility>
#include <variant>

#include "automation/currency.h"
#include "automation/date.h"
#include "automation/text.h"

namespace vantlo {

struct Empty {
    friend constexpr bool operator==(Empty, Empty) = default;
};

struct Null {
    friend constexpr bool operator==(Null, Null) = default;
};

/// A value of any other type: a Decimal, a 64-bit integer, an object, an array, an error.
///
/// It has no SQL literal. `number` is the decimal text of a Decimal or 64-bit integer, which converts to the numeric
/// types; it is empty for everything else.
struct Other {
    Text number;

    friend bool operator==(const Other&, const Other&) = default;
};

/// One automation value of the closed set that this system distinguishes.
///
/// Construction is by exact type: an int16_t is an Integer, an int32_t a Long, a uint8_t a Byte. A conversion that
/// could mean two things does not compile.
class Variant {
public:
    using Value = std::variant<Empty, Null, std::uint8_t, std::int16_t, std::int32_t, float, double, Currency, Date,
                               bool, Text, Other>;

    Variant() = default;
    Variant(Null value) : value_(value) {}
    Variant(std::uint8_t value) : value_(value) {}
    Variant(std::int16_t value) : value_(value) {}
    Variant(std::int32_t value) : value_(value) {}
    Variant(float value) : value_(value) {}
    Variant(double value) : value_(value) {}
    Variant(Currency value) : value_(value) {}
    Variant(Date value) : value_(value) {}
    Variant(bool value) : value_(value) {}
    Variant(Text value) : value_(std::move(value)) {}
    Variant(Other value) : value_(std::move(value)) {}
    Variant(const char16_t* value) : value_(Text(value)) {}
    template <typename Pointer>
    Variant(Pointer*) = delete;  // it would silently become a Boolean

    [[nodiscard]] const Value& value() const { return value_; }

    template <typename Type>
    [[nodiscard]] const Type* get_if() const {
        return std::get_if<Type>(&value_);
    }

    template <typename Type>
    [[nodiscard]] bool is() const {
        return std::holds_alternative<Type>(value_);
    }

    friend bool operator==(const Variant&, const Variant&) = default;

private:
    Value value_;
};

// Conversions by automation's rules. Empty counts as 0 or the empty text, True as -1, a Date as its number of days, a
// String as the number that it contains.
// Errors   invalid_use_of_null for Null, type_mismatch for a text that is no number and for an Other without one,
//          overflow for a value that does not fit.

/// CCur: rounds half to even at the fourth decimal.
Currency to_currency(const Variant& value);

/// CInt: rounds half to even to a 16-bit whole number.
std::int16_t to_integer(const Variant& value);

/// CLng: rounds half to even to a 32-bit whole number.
std::int32_t to_long(const Variant& value);

/// CDbl.
double to_double(const Variant& value);

/// CStr: numbers as number_text writes them, dates as ordinary_text does, Boolean as `True` or `False`.
Text to_text(const Variant& value);

/// `0 - x` by automation's subtraction, where 0 is an Integer.
///
/// Shape    Null stays Null. Single, Double, Currency, Date and an Other with a number keep their type; Empty, Byte and
///          Boolean give an Integer; Integer and Long widen where the negative does not fit; a numeric String gives a
///          Double. Negating a Single gives the same but for the sign of zero, which no text shows.
/// Errors   type_mismatch for a text that is no number and for an Other without one, overflow for a Currency or Date
///          whose negative does not exist.
/// Example  True -> Integer 1
Variant zero_minus(const Variant& value);

}  // namespace vantlo
