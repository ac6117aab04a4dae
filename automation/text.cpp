#include "automation/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vantlo {

namespace {

constexpr char32_t replacement = U'\uFFFD';
constexpr char32_t first_beyond_basic_plane = 0x10000;

constexpr bool is_high_surrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool is_low_surrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
constexpr bool is_surrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }

constexpr char16_t ascii_lower(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

// A code point, or a lone surrogate as it stands, and the number of code units or bytes that it takes.
struct Step {
    char32_t code_point;
    std::size_t length;
};

Step decode_utf16(TextView text) {
    const char32_t first = text[0];
    if (is_high_surrogate(first) && text.size() > 1 && is_low_surrogate(text[1])) {
        return {first_beyond_basic_plane + ((first - 0xD800) << 10) + (text[1] - char32_t{0xDC00}), 2};
    }
    return {first, 1};
}

// A byte that does not begin a well-formed sequence becomes U+FFFD by itself.
Step decode_utf8(std::string_view bytes) {
    constexpr Step bad = {replacement, 1};
    const auto byte_at = [bytes](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
    const std::uint8_t lead = byte_at(0);
    if (lead < 0x80) return {lead, 1};
    if (lead < 0xC2 || lead > 0xF4) return bad;

    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (bytes.size() < length) return bad;
    char32_t code_point = lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte_at(i) & 0xC0) != 0x80) return bad;
        code_point = (code_point << 6) | (byte_at(i) & 0x3F);
    }
    const char32_t smallest = length == 2 ? 0x80 : length == 3 ? 0x800 : first_beyond_basic_plane;
    if (code_point < smallest || code_point > 0x10FFFF || is_surrogate(code_point)) return bad;
    return {code_point, length};
}

void append_utf8(std::string& bytes, char32_t code_point) {
    const auto append = [&bytes](char32_t byte) { bytes.push_back(static_cast<char>(byte)); };
    if (code_point < 0x80) {
        append(code_point);
        return;
    }
    if (code_point < 0x800) {
        append(0xC0 | (code_point >> 6));
    } else {
        if (code_point < first_beyond_basic_plane) {
            append(0xE0 | (code_point >> 12));
        } else {
            append(0xF0 | (code_point >> 18));
            append(0x80 | ((code_point >> 12) & 0x3F));
        }
        append(0x80 | ((code_point >> 6) & 0x3F));
    }
    append(0x80 | (code_point & 0x3F));
}

void append_utf16(Text& text, char32_t code_point) {
    if (code_point < first_beyond_basic_plane) {
        text.push_back(static_cast<char16_t>(code_point));
        return;
    }
    const char32_t offset = code_point - first_beyond_basic_plane;
    text.push_back(static_cast<char16_t>(0xD800 + (offset >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
}

}  // namespace

TextView trim_blanks(TextView text) {
    const std::size_t first = text.find_first_not_of(u' ');
    if (first == TextView::npos) return {};
    return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

Text replace_all(TextView text, char16_t from, TextView to) {
    const auto found = static_cast<std::size_t>(std::ranges::count(text, from));
    Text result;
    result.reserve(text.size() - found + found * to.size());
    for (const char16_t unit : text) {
        if (unit == from) {
            result.append(to);
        } else {
            result.push_back(unit);
        }
    }
    return result;
}

bool equal_ignoring_case(TextView left, TextView right) {
    return std::ranges::equal(left, right, {}, ascii_lower, ascii_lower);
}

bool is_well_formed(TextView text) {
    while (!text.empty()) {
        const Step step = decode_utf16(text);
        if (is_surrogate(step.code_point)) return false;
        text.remove_prefix(step.length);
    }
    return true;
}

std::string to_utf8(TextView text) {
    std::string bytes;
    bytes.reserve(text.size() * 3);  // the most that one code unit can need
    while (!text.empty()) {
        const Step step = decode_utf16(text);
        append_utf8(bytes, is_surrogate(step.code_point) ? replacement : step.code_point);
        text.remove_prefix(step.length);
    }
    return bytes;
}

Text from_utf8(std::string_view bytes) {
    Text text;
    text.reserve(bytes.size());  // no byte becomes more than one code unit
    while (!bytes.empty()) {
        const Step step = decode_utf8(bytes);
        append_utf16(text, step.code_point);
        bytes.remove_prefix(step.length);
    }
    return text;
}

}  // namespace vantlo
