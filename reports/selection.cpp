#include "reports/selection.h"

#include <algorithm>
#include <string>

#include "automation/calendar.h"
#include "automation/error.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

/// A sign that a LIKE pattern takes as it is.
Text escaped(char16_t sign) {
    const bool is_special = TextView(u"%_[]!").find(sign) != TextView::npos;
    return is_special ? Text{u'!', sign} : Text{sign};
}

/// A pattern's own signs for those of LIKE.
Text like_pattern(const Text& pattern) {
    Text like;
    for (const char16_t sign : pattern) like += sign == u'*' ? Text(u"%") : sign == u'?' ? Text(u"_") : escaped(sign);
    return like;
}

Text like(const Text& value, const Text& pattern) { return value + u" like " + GetSqlVal(pattern) + u" escape '!'"; }

Text matches(const Text& column, const Text& pattern) {
    const bool is_plain = pattern.find_first_of(u"*?") == Text::npos;
    return is_plain ? column + u"=" + GetSqlVal(pattern) : like(column, like_pattern(pattern));
}

Text and_any(const std::vector<Text>& conditions) {
    Text any;
    for (const Text& condition : conditions) any += (any.empty() ? u" and (" : u" or ") + condition;
    return any.empty() ? any : any + u")";
}

/// The usual way with one mark: behind the last `*`, try again one character further on.
bool matches_pattern(TextView text, TextView pattern) {
    std::size_t at = 0, in_pattern = 0, star = TextView::npos, behind_star = 0;
    while (at < text.size()) {
        if (in_pattern < pattern.size() && pattern[in_pattern] == u'*') {
            star = in_pattern++;
            behind_star = at;
        } else if (in_pattern < pattern.size() && (pattern[in_pattern] == u'?' || pattern[in_pattern] == text[at])) {
            ++in_pattern;
            ++at;
        } else if (star != TextView::npos) {
            in_pattern = star + 1;
            at = ++behind_star;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', in_pattern) == TextView::npos;
}

Text day_literal(Date day) { return u"'" + format_date(day) + u"'"; }

/// A part of a date text: digits alone. Returns nothing for all else.
std::optional<int> number_of(std::string_view digits) {
    if (digits.empty() || digits.size() > 4) return std::nullopt;
    int number = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') return std::nullopt;
        number = number * 10 + (digit - '0');
    }
    return number;
}

}  // namespace

Text and_matches(TextView column, const std::vector<Text>& patterns) {
    std::vector<Text> conditions;
    for (const Text& pattern : patterns) conditions.push_back(matches(Text(column), pattern));
    return and_any(conditions);
}

bool matches_one(TextView text, const std::vector<Text>& patterns) {
    return std::ranges::any_of(patterns, [&](const Text& pattern) { return matches_pattern(text, pattern); });
}

Text and_contains(const std::vector<Text>& columns, const Text& text) {
    if (text.empty()) return {};
    Text pattern = u"%";
    for (const char16_t sign : text) {
        const bool is_capital = sign >= u'A' && sign <= u'Z';
        pattern += escaped(is_capital ? static_cast<char16_t>(sign - u'A' + u'a') : sign);
    }
    std::vector<Text> conditions;
    for (const Text& column : columns) conditions.push_back(like(u"lower(" + column + u")", pattern + u"%"));
    return and_any(conditions);
}

std::optional<Period> days_of(std::string_view text) {
    std::vector<int> parts;
    while (parts.size() < 3) {
        const std::size_t end = text.find_first_of("-/");
        const std::optional<int> part = number_of(text.substr(0, end));
        if (!part) return std::nullopt;
        parts.push_back(*part);
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
        if (parts.size() == 3) return std::nullopt;
    }
    const auto midnight = [](int year, int month, int day) { return date_of({year, month, day, 0, 0, 0}); };
    try {
        const int year = parts[0];
        if (year < 1000) return std::nullopt;
        if (parts.size() == 1) return Period{midnight(year, 1, 1), midnight(year + 1, 1, 1)};
        const int month = parts[1];
        const bool is_december = month == 12;
        if (parts.size() == 2) {
            return Period{midnight(year, month, 1),
                          midnight(year + (is_december ? 1 : 0), is_december ? 1 : month + 1, 1)};
        }
        const Date day = midnight(year, month, parts[2]);
        return Period{day, Date{day.days + 1}};
    } catch (const Failure&) {
        return std::nullopt;  // no such day
    }
}

Text and_within(TextView column, const Period& period) {
    Text condition;
    if (period.from) condition += u" and " + Text(column) + u">=" + day_literal(*period.from);
    if (period.until) condition += u" and " + Text(column) + u"<" + day_literal(*period.until);
    return condition;
}

}  // namespace vantlo
