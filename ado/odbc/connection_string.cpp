#include "ado/odbc/connection_string.h"

#include <algorithm>
#include <span>

#include "automation/text.h"

namespace vantlo {

namespace {

constexpr const char16_t* password_keys[] = {u"PWD", u"Passwd", u"Password", u"SSLPwd"};
constexpr const char16_t* driver_keys[] = {u"Driver"};

/// Takes everything up to a character off the front of a text, and the character with it.
std::string_view take_until(std::string_view& text, char end) {
    const std::string_view taken = text.substr(0, text.find(end));
    text.remove_prefix(std::min(taken.size() + 1, text.size()));
    return taken;
}

std::string take_value(std::string_view& text) {
    if (!text.starts_with('{')) return std::string(take_until(text, ';'));
    text.remove_prefix(1);
    std::string value(take_until(text, '}'));
    while (text.starts_with('}')) {
        text.remove_prefix(1);
        value += '}';
        value += take_until(text, '}');
    }
    take_until(text, ';');
    return value;
}

bool is_one_of(std::string_view key, std::span<const char16_t* const> keys) {
    key.remove_prefix(std::min(key.find_first_not_of(' '), key.size()));
    const Text name = from_utf8(key.substr(0, key.find_last_not_of(' ') + 1));
    return std::ranges::any_of(keys, [&](const char16_t* other) { return equal_ignoring_case(name, other); });
}

bool names_password(std::string_view key) { return is_one_of(key, password_keys); }

/// Whether a value stands for itself without braces.
bool is_plain(std::string_view value) {
    return !value.empty() && value.find_first_of("[]{}(),;?*=!@") == std::string_view::npos && value.front() != ' ' &&
           value.back() != ' ';
}

}  // namespace

std::string without_password(std::string text, std::string_view connection_string) {
    while (!connection_string.empty()) {
        const bool is_password = names_password(take_until(connection_string, '='));
        const std::string value = take_value(connection_string);
        if (!is_password || value.empty()) continue;
        for (std::size_t at = 0; (at = text.find(value, at)) != std::string::npos; at += 3) {
            text.replace(at, value.size(), "***");
        }
    }
    return text;
}

bool has_password(std::string_view connection_string) {
    const std::string text(connection_string);
    return without_password(text, text) != text;
}

bool has_closing_brace(std::string_view connection_string) {
    while (!connection_string.empty()) {
        const bool is_password = names_password(take_until(connection_string, '='));
        if (take_value(connection_string).find('}') != std::string::npos && is_password) return true;
    }
    return false;
}

std::string with_password(std::string_view connection_string, std::string_view password) {
    std::string text;
    while (!connection_string.empty()) {
        const std::string_view pair = connection_string;
        const bool is_password = names_password(take_until(connection_string, '='));
        const bool is_empty = take_value(connection_string).empty();
        if (!is_password || !is_empty) text += pair.substr(0, pair.size() - connection_string.size());
    }
    if (!text.empty() && !text.ends_with(';')) text += ';';
    text += "PWD={";
    for (const char character : password) text += character == '}' ? "}}" : std::string(1, character);
    return text + "};";
}

std::string without_needless_braces(std::string_view connection_string) {
    std::string text;
    while (!connection_string.empty()) {
        const std::string_view pair = connection_string;
        const std::string_view key = take_until(connection_string, '=');
        const std::string value = take_value(connection_string);
        const std::string_view as_it_stands = pair.substr(0, pair.size() - connection_string.size());
        const bool keeps_braces = names_password(key) || is_one_of(key, driver_keys) || !is_plain(value);
        const bool is_last = connection_string.empty() && !as_it_stands.ends_with(';');
        text += keeps_braces ? std::string(as_it_stands) : std::string(key) + "=" + value + (is_last ? "" : ";");
    }
    return text;
}

}  // namespace vantlo
