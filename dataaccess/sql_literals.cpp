#include "dataaccess/sql_literals.h"

#include <optional>
#include <type_traits>

#include "automation/calendar.h"
#include "automation/error.h"
#include "automation/number_text.h"
#include "dataaccess/shell_hooks.h"
#include "dataaccess/trap.h"

namespace vantlo {
inline namespace CorvaneOPT_Function {

namespace {

Text joined(TextView first, TextView second, TextView third, TextView fourth = {}) {
    Text text;
    text.reserve(first.size() + second.size() + third.size() + fourth.size());
    return text.append(first).append(second).append(third).append(fourth);
}

/// A text between two quotes.
Text quoted(TextView text) {
    Text literal(text.size() + 2, u'\'');
    text.copy(&literal[1], text.size());
    return literal;
}

/// A text escaped for LIKE, with the wildcard at the ends that `position` names.
Text like_literal(const Text& text, TextView wildcard, TextView position) {
    const Text escaped = to_text(Get_LikeStr(text));
    if (!equal_ignoring_case(wildcard, not_given)) {
        if (equal_ignoring_case(position, u"Start")) return joined(u" like '", wildcard, escaped, u"'");
        if (equal_ignoring_case(position, u"End")) return joined(u" like '", escaped, wildcard, u"'");
        if (equal_ignoring_case(position, u"Both")) {
            return joined(joined(u" like '", wildcard, escaped), wildcard, u"'");
        }
    }
    return quoted(escaped);
}

/// The trimmed text in quotes, its own quotes doubled.
Text text_literal(TextView text) {
    const TextView trimmed = trim_blanks(text);
    const bool has_quotes = trimmed.find(u'\'') != TextView::npos;
    return has_quotes ? quoted(replace_all(trimmed, u'\'', u"''")) : quoted(trimmed);
}

Text date_literal(Date date) {
    // Get_DateStr runs for the zero date too: a failure in it is shown, although its text is not used.
    const Text literal = Get_DateStr(date, date_form::whole);
    return date.days == 0 ? Text(u"null") : literal;
}

/// Reads the base text as a date again, for forms 1 to 3.
Date read_back(TextView base_text) {
    const std::optional<Date> date = date_from_text(base_text);
    if (!date) throw Failure(error::type_mismatch);
    return *date;
}

Date date_of_value(const Variant& value) {
    if (const Date* date = value.get_if<Date>()) return *date;
    if (const Text* text = value.get_if<Text>()) return read_back(*text);
    return Date{to_double(value)};
}

TextView delimiter_of(DatabaseKind kind) {
    switch (kind) {
        case DatabaseKind::sql_server: return u"'";
        case DatabaseKind::access: return u"#";
        case DatabaseKind::other: break;
    }
    return {};
}

Text formatted(const Text& base_text, std::int16_t form) {
    switch (form) {
        case date_form::month: return format_month(read_back(base_text));
        case date_form::day: return format_date(read_back(base_text));
        case date_form::time: return format_time(read_back(base_text));
        default: return base_text;
    }
}

}  // namespace

Text GetSqlVal(const Variant& value, bool likeMode, TextView wildcard, TextView position) {
    Text literal;
    run_helper(u"GetSqlVal", [&] {
        literal = std::visit(
            [&](const auto& content) -> Text {
                using Type = std::decay_t<decltype(content)>;
                if constexpr (std::is_same_v<Type, Empty> || std::is_same_v<Type, Null>) {
                    return u"null";
                } else if constexpr (std::is_same_v<Type, Date>) {
                    return date_literal(content);
                } else if constexpr (std::is_same_v<Type, bool>) {
                    return content ? u"1" : u"0";
                } else if constexpr (std::is_same_v<Type, Text>) {
                    return likeMode ? like_literal(content, wildcard, position) : text_literal(content);
                } else if constexpr (std::is_same_v<Type, Other>) {
                    return {};
                } else {
                    return number_text(content);
                }
            },
            value.value());
    });
    return literal;
}

Variant Get_LikeStr(const Variant& text) {
    Text escaped(trim_blanks(to_text(text)));
    escaped = replace_all(escaped, u'\'', u"''");
    escaped = replace_all(escaped, u'[', u"[[]");  // before the later steps add brackets
    escaped = replace_all(escaped, u'_', u"[_]");
    return replace_all(escaped, u'%', u"[%]");
}

Text Get_DateStr(const Variant& value, std::int16_t form) {
    Text literal;
    run_helper(u"Get_DateStr", [&] {
        const Date date = date_of_value(value);
        const Text base_text = parts_of(date).year <= 1900 ? ordinary_text(date) : format_date_time(date);
        const TextView delimiter = delimiter_of(project_state().database_kind);
        if (delimiter.empty()) return;
        literal = joined(delimiter, formatted(base_text, form), delimiter);
    });
    return literal;
}

}  // namespace CorvaneOPT_Function
}  // namespace vantlo
