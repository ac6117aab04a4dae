#include "import/cell_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <regex>
#include <vector>

#include "automation/calendar.h"

namespace vantlo {

namespace {

using NumberState = CellReading<std::string>::State;
using DateState = CellReading<Date>::State;

constexpr std::string_view digits = "0123456789";

/// Full-width characters as those of ASCII, other blanks and minus signs too.
std::string narrow(std::string_view text) {
    struct Pair {
        std::string_view from;
        char to;
    };
    constexpr Pair pairs[] = {{"\u3000", ' '}, {"\u00A0", ' '}, {"\u202F", ' '}, {"\u2212", '-'}, {"。", '.'}};
    std::string narrowed;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view rest = text.substr(at);
        const auto pair = std::ranges::find_if(pairs, [&](const Pair& each) { return rest.starts_with(each.from); });
        if (pair != std::ranges::end(pairs)) {
            narrowed += pair->to;
            at += pair->from.size();
        } else if (rest.size() > 2 && rest.starts_with("\xEF\xBC") && rest[2] >= '\x81' && rest[2] <= '\xBF') {
            narrowed += static_cast<char>(static_cast<unsigned char>(rest[2]) - 0x60);  // U+FF01 is the wide !
            at += 3;
        } else {
            narrowed += text[at++];
        }
    }
    return narrowed;
}

/// A number taken apart at its marks. Returns nothing if the groups are none of thousands.
std::optional<std::string> without_groups(std::string_view body, char group, std::optional<char> decimal) {
    std::string_view whole = body, fraction;
    if (decimal && body.find(*decimal) != std::string_view::npos) {
        whole = body.substr(0, body.find(*decimal));
        fraction = body.substr(whole.size() + 1);
        if (fraction.empty() || fraction.find_first_not_of(digits) != std::string_view::npos) return std::nullopt;
    }
    std::string plain;
    for (std::size_t start = 0, end = 0; end != std::string_view::npos; start = end + 1) {
        end = whole.find(group, start);
        const std::string_view part = whole.substr(start, end - start);
        const bool is_alone = start == 0 && end == std::string_view::npos;
        const bool has_length = is_alone     ? !part.empty()
                                : start == 0 ? part.size() >= 1 && part.size() <= 3 && part[0] != '0'
                                             : part.size() == 3;
        if (!has_length || part.find_first_not_of(digits) != std::string_view::npos) return std::nullopt;
        plain += part;
    }
    if (!fraction.empty()) plain += "." + std::string(fraction);
    return plain;
}

bool is_with_text(std::string_view body) {
    const std::size_t end = body.find_first_not_of("0123456789.,");
    return end != 0 && end != std::string_view::npos && body.find_first_of(digits, end) == std::string_view::npos &&
           std::string_view("+-").find(body[end]) == std::string_view::npos && body.find_first_of(digits) == 0;
}

/// A day and a time that a form of text names.
struct Parts {
    int year = 0, month = 0, day = 0;
};

int number_of(const std::string& text) {
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// The month of that English name, or of its first three letters; 0 if there is none.
int month_of(const std::string& written) {
    const std::string name = lower_case(written);
    constexpr std::string_view months[] = {"january", "february", "march",     "april",   "may",      "june",
                                           "july",    "august",   "september", "october", "november", "december"};
    for (std::size_t index = 0; index < std::size(months); ++index) {
        if (name == months[index] || name == months[index].substr(0, 3) || (index == 8 && name == "sept")) {
            return static_cast<int>(index) + 1;
        }
    }
    return 0;
}

void replace_all(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

/// The characters of a Chinese date as the marks of others.
std::string without_chinese(std::string text) {
    struct Pair {
        std::string_view from, to;
    };
    constexpr Pair pairs[] = {{"年", "-"},     {"月", "-"},     {"日", " "},     {"号", " "},
                              {"时", ":"},     {"点", ":"},     {"分", ":"},     {"秒", " "},
                              {"上午", "AM "}, {"下午", "PM "}, {"星期一", " "}, {"星期二", " "},
                              {"星期三", " "}, {"星期四", " "}, {"星期五", " "}, {"星期六", " "}};
    replace_all(text, "星期日", " ");  // before the day's own character
    for (const Pair& pair : pairs) replace_all(text, pair.from, pair.to);
    text = without_blanks(text);
    if (text.ends_with(':')) text.pop_back();
    return text;
}

/// `H:MM[:SS]` on the 24-hour clock; nothing if it is none. `half` is AM, PM or empty.
std::optional<std::string> time_text(const std::smatch& match, std::size_t first) {
    if (!match[first + 1].matched) return "";
    std::string half = match[first].matched ? match[first].str() : match[first + 4].str();
    if (match[first].matched && match[first + 4].matched) return std::nullopt;
    int hour = number_of(match[first + 1]);
    if (!half.empty()) {
        if (hour < 1 || hour > 12) return std::nullopt;
        hour = hour % 12 + ((half[0] | 0x20) == 'p' ? 12 : 0);
    }
    return fmt::format(" {}:{}:{}", hour, match[first + 2].str(),
                       match[first + 3].matched ? match[first + 3].str() : "00");
}

std::optional<double> plain_number(std::string_view text) {
    double number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (problem != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// The least and the first too great serial number that is taken for a day where nothing else says so.
constexpr double least_serial = 20000, end_of_serials = 80000;

CellReading<Date> read_from(const std::optional<Date>& date) {
    return date ? CellReading<Date>{DateState::read, *date} : CellReading<Date>{DateState::none};
}

}  // namespace

CellReading<std::string> number_of_cell(std::string_view text, const CellRules& rules) {
    const std::string number = narrow(without_blanks(text));
    const bool is_signed = number.starts_with('-') || number.starts_with('+');
    const std::string sign = number.starts_with('-') ? "-" : "";
    const std::string_view body = std::string_view(number).substr(is_signed ? 1 : 0);
    const auto commas = std::ranges::count(body, ','), points = std::ranges::count(body, '.');
    const auto read = [&](const std::optional<std::string>& plain) {
        return plain ? CellReading<std::string>{NumberState::read, sign + *plain}
                     : CellReading<std::string>{NumberState::none};
    };
    if (is_with_text(body)) return {NumberState::with_text};
    if (body.starts_with('-') || body.starts_with('+')) return {NumberState::none};
    if (rules.decimal) {
        const char group = *rules.decimal == ',' ? '.' : ',';
        if (commas + points == 0 || (*rules.decimal == '.' && commas == 0)) return read(std::string(body));
        return read(without_groups(body, group, rules.decimal));
    }
    if (commas > 0 && points > 0) {
        const bool has_point_last = body.rfind('.') > body.rfind(',');
        return read(without_groups(body, has_point_last ? ',' : '.', has_point_last ? '.' : ','));
    }
    if (commas > 1) return read(without_groups(body, ',', std::nullopt));
    if (points > 1) return read(without_groups(body, '.', std::nullopt));
    if (commas == 1) {
        if (without_groups(body, ',', std::nullopt)) return {NumberState::ambiguous};
        return {without_groups(body, '.', ',') ? NumberState::comma : NumberState::none};
    }
    if (points == 1 && rules.point_may_group && without_groups(body, '.', std::nullopt)) {
        return {NumberState::ambiguous};
    }
    return read(std::string(body));
}

CellReading<Date> date_of_cell(std::string_view text, const CellRules& rules) {
    constexpr std::size_t longest = 64;
    const std::string_view inner = without_blanks(text);
    if (inner.empty() || inner.size() > longest) return {DateState::none};
    const std::string written = without_chinese(narrow(inner));
    if (written.find_first_of("-/") != std::string::npos) {
        if (const auto date = date_from_text(from_utf8(written))) return {DateState::read, *date};
    }
    const auto read_parts = [&](const Parts& parts, const std::optional<std::string>& time) {
        if (!time) return CellReading<Date>{DateState::none};
        return read_from(
            date_from_text(from_utf8(fmt::format("{:04}-{}-{}{}", parts.year, parts.month, parts.day, *time))));
    };
#define TIME_FORM "(?:,?[ T]*(?:(AM|PM) ?)?(\\d{1,2}):(\\d{1,2})(?::(\\d{1,2})(?:\\.\\d+)?)?(?: ?(AM|PM))?)?"
    constexpr auto flags = std::regex::icase | std::regex::optimize;
    static const std::regex year_first("(\\d{4})([-/.]) ?(\\d{1,2})\\2 ?(\\d{1,2})\\.?" TIME_FORM, flags);
    static const std::regex year_last("(\\d{1,2})([-/.]) ?(\\d{1,2})\\2 ?(\\d{4})" TIME_FORM, flags);
    static const std::regex day_and_name("(\\d{1,2})[-. ]+([a-z]{3,9})[-., ]+(\\d{4})" TIME_FORM, flags);
    static const std::regex name_and_day("([a-z]{3,9})\\.? +(\\d{1,2}),? +(\\d{4})" TIME_FORM, flags);
#undef TIME_FORM
    static const std::regex eight_digits("((?:19|20|21)\\d\\d)(\\d\\d)(\\d\\d)", flags);

    std::smatch match;
    if (std::regex_match(written, match, eight_digits)) {
        return read_parts({number_of(match[1]), number_of(match[2]), number_of(match[3])}, "");
    }
    if (const auto serial = plain_number(written)) {
        const bool is_day = *serial >= least_serial && *serial < end_of_serials;
        return read_from(is_day ? date_of_serial(*serial, rules.counts_from_1904) : std::nullopt);
    }
    if (std::regex_match(written, match, year_first)) {
        return read_parts({number_of(match[1]), number_of(match[3]), number_of(match[4])}, time_text(match, 5));
    }
    if (std::regex_match(written, match, day_and_name)) {
        return read_parts({number_of(match[3]), month_of(match[2]), number_of(match[1])}, time_text(match, 4));
    }
    if (std::regex_match(written, match, name_and_day)) {
        return read_parts({number_of(match[3]), month_of(match[1]), number_of(match[2])}, time_text(match, 4));
    }
    if (!std::regex_match(written, match, year_last)) return {DateState::none};
    const int first = number_of(match[1]), second = number_of(match[3]), year = number_of(match[4]);
    const auto time = time_text(match, 5);
    // A point stands between the parts where the day comes first.
    const bool is_day_first = rules.date_order == DateOrder::day_first ||
                              (rules.date_order == DateOrder::unknown && (match[2] == "." || first > 12));
    const bool is_clear = is_day_first || rules.date_order == DateOrder::month_first || second > 12 || first == second;
    if (!is_clear) return {DateState::ambiguous};
    return is_day_first ? read_parts({year, second, first}, time) : read_parts({year, first, second}, time);
}

std::optional<Date> date_of_serial(double serial, bool counts_from_1904) {
    constexpr double days_to_1904 = 1462, end_of_february_1900 = 60, end_of_days = 2958466;
    if (counts_from_1904) serial += days_to_1904;
    if (!(serial >= 1) || serial >= end_of_days) return std::nullopt;
    // The count from 1900 has a 29 February of that year as its day 60.
    if (serial < end_of_february_1900) return Date{serial + 1};
    if (serial < end_of_february_1900 + 1) return std::nullopt;
    // A second is the least that a spreadsheet shows, and that a date keeps.
    const Text text = ordinary_text(Date{serial});
    return date_from_text(text);
}

std::string lower_case(std::string_view text) {
    std::string lower(text);
    for (char& letter : lower) letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter | 0x20) : letter;
    return lower;
}

std::string_view without_blanks(std::string_view text) {
    constexpr std::string_view blanks[] = {" ", "\t", "\r", "\n", "\u00A0", "\u3000", "\u202F", "\uFEFF"};
    for (bool goes_on = true; goes_on;) {
        goes_on = false;
        for (const std::string_view blank : blanks) {
            if (text.starts_with(blank)) {
                text.remove_prefix(blank.size());
                goes_on = true;
            } else if (text.ends_with(blank)) {
                text.remove_suffix(blank.size());
                goes_on = true;
            }
        }
    }
    return text;
}

}  // namespace vantlo
