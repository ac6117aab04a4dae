#include "ado/odbc/connection_string.h"

#include <algorithm>

#include "automation/text.h"

namespace vantlo {

namespace {

constexpr const char16_t* password_keys[] = {u"PWD", u"Passwd", u"Password", u"SSLPwd"};

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

bool names_password(std::string_view key) {
    key.remove_prefix(std::min(key.find_first_not_of(' '), key.size()));
    const Text name = from_utf8(key.substr(0, key.find_last_not_of(' ') + 1));
    return std::ranges::any_of(password_keys,
                               [&](const char16_t* password_key) { return equal_ignoring_case(name, password_key); });
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

}  // namespace vantlo
