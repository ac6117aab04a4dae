#include "ado/odbc/connection_string.h"

#include <algorithm>

#include "automation/text.h"

namespace vantlo {

namespace {

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
    return equal_ignoring_case(name, u"PWD") || equal_ignoring_case(name, u"Password");
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

}  // namespace vantlo
