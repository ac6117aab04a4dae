#include "automation/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "automation/error.h"

namespace vantlo {

namespace {

template <typename Floating>
Text floating_text(Floating value, int significant_digits) {
    if (!std::isfinite(value)) throw Failure(error::overflow);
    if (value == 0) return u"0";  // of either sign
    std::array<char, 32> buffer;
    char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general,
                                    significant_digits)
                          .ptr;
    std::replace(buffer.data(), end, 'e', 'E');
    return Text(buffer.data(), end);
}

// A decimal number of any length: 0.DIGITS times ten to the power `point`.
struct Decimal {
    bool negative = false;
    std::string digits;  // without zeros at either end; empty for zero
    std::int64_t point = 0;
};

constexpr bool is_digit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

// Removes a sign from the front of the text. Returns: whether it was a minus.
bool take_sign(TextView& text) {
    if (text.empty() || (text.front() != u'-' && text.front() != u'+')) return false;
    const bool negative = text.front() == u'-';
    text.remove_prefix(1);
    return negative;
}

// Reads the whole text as an exponent: an optional sign and at least one digit.
std::optional<std::int64_t> parse_exponent(TextView text) {
    // Out of range of every number type; no text has enough digits to bring such a number back into range.
    constexpr std::int64_t largest = 1'000'000'000'000'000;

    const bool negative = take_sign(text);
    if (text.empty() || !std::ranges::all_of(text, is_digit)) return std::nullopt;
    std::int64_t exponent = 0;
    for (const char16_t digit : text) exponent = std::min(exponent * 10 + (digit - u'0'), largest);
    return negative ? -exponent : exponent;
}

std::optional<Decimal> parse_decimal(TextView text) {
    text = trim_blanks(text);
    Decimal number;
    number.negative = take_sign(text);

    bool any_digit = false;
    bool after_point = false;
    while (!text.empty()) {
        const char16_t unit = text.front();
        if (is_digit(unit)) {
            any_digit = true;
            const bool leading_zero = unit == u'0' && number.digits.empty();
            if (!leading_zero) number.digits.push_back(static_cast<char>(unit));
            if (after_point && leading_zero) --number.point;
            if (!after_point && !leading_zero) ++number.point;
        } else if (unit == u'.' && !after_point) {
            after_point = true;
        } else if (unit != u',' || !any_digit || after_point) {
            break;
        }
        text.remove_prefix(1);
    }
    if (!any_digit) return std::nullopt;
    number.digits.erase(number.digits.find_last_not_of('0') + 1);

    if (!text.empty()) {
        constexpr TextView exponent_letters = u"EeDd";
        if (exponent_letters.find(text.front()) == TextView::npos) return std::nullopt;
        const std::optional<std::int64_t> exponent = parse_exponent(text.substr(1));
        if (!exponent) return std::nullopt;
        number.point += *exponent;
    }
    return number;
}

// The number without its sign, in units of ten to the power -`decimals`, rounded half to even.
// Errors   overflow where 19 decimal digits do not hold it.
std::uint64_t rounded_magnitude(const Decimal& number, int decimals) {
    const std::int64_t whole_digits = number.point + decimals;
    if (number.digits.empty() || whole_digits < 0) return 0;
    if (whole_digits > 19) throw Failure(error::overflow);

    const auto kept = static_cast<std::size_t>(whole_digits);
    std::uint64_t magnitude = 0;
    for (std::size_t i = 0; i < kept; ++i) {
        const char digit = i < number.digits.size() ? number.digits[i] : '0';
        magnitude = magnitude * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    // The digits have no trailing zeros, so the rest compares with one half as its text does with "5".
    const std::string_view rest = std::string_view(number.digits).substr(std::min(kept, number.digits.size()));
    const int against_half = rest.compare("5");
    if (against_half > 0 || (against_half == 0 && magnitude % 2 == 1)) ++magnitude;
    return magnitude;
}

}  // namespace

Text number_text(std::int32_t value) {
    std::array<char, 12> buffer;
    return Text(buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr);
}

Text number_text(float value) { return floating_text(value, 7); }

Text number_text(double value) { return floating_text(value, 15); }

Text number_text(Currency value) {
    std::array<char, 24> buffer;
    char* end = buffer.data();
    if (value < Currency()) *end++ = '-';
    end = std::to_chars(end, buffer.data() + buffer.size(), value.magnitude() / Currency::scale).ptr;
    std::uint64_t fraction = value.magnitude() % Currency::scale;
    if (fraction != 0) *end++ = '.';
    for (std::uint64_t unit = Currency::scale / 10; fraction != 0; unit /= 10) {
        *end++ = static_cast<char>('0' + fraction / unit);
        fraction %= unit;
    }
    return Text(buffer.data(), end);
}

std::optional<double> double_from_text(TextView text) {
    const std::optional<Decimal> number = parse_decimal(text);
    if (!number) return std::nullopt;
    if (number->digits.empty()) return 0.0;

    std::string plain = number->negative ? "-" : "";
    plain += number->digits.front();
    plain += '.';
    plain.append(number->digits, 1);
    plain += 'e';
    plain += std::to_string(number->point - 1);

    // from_chars reports a number too close to zero as out of range, too; its value is 0.
    double value = 0;
    const std::errc outcome = std::from_chars(plain.data(), plain.data() + plain.size(), value).ec;
    const bool too_large = outcome == std::errc::result_out_of_range && number->point > 0;
    if (too_large || std::isinf(value)) throw Failure(error::overflow);
    return value;
}

std::optional<Currency> currency_from_text(TextView text) {
    const std::optional<Decimal> number = parse_decimal(text);
    if (!number) return std::nullopt;
    return Currency::from_magnitude(rounded_magnitude(*number, 4), number->negative);
}

std::optional<std::int32_t> long_from_text(TextView text) {
    const std::optional<Decimal> number = parse_decimal(text);
    if (!number) return std::nullopt;
    const std::uint64_t magnitude = rounded_magnitude(*number, 0);
    constexpr std::uint64_t largest = std::numeric_limits<std::int32_t>::max();
    if (magnitude > largest + (number->negative ? 1 : 0)) throw Failure(error::overflow);
    const auto value = static_cast<std::int64_t>(magnitude);
    return static_cast<std::int32_t>(number->negative ? -value : value);
}

}  // namespace vantlo
