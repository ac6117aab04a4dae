#include "automation/text.h"

#include <doctest/doctest.h>

#include <string>

#include "tests/support/printing.h"

namespace vantlo {

namespace {

TEST_SUITE_BEGIN("[text]");

TEST_CASE("trim_blanks takes U+0020 off both ends and nothing else") {
    struct Row {
        TextView input, expected;
    };
    // clang-format off
    const Row rows[] = {
        {u"",                      u""},
        {u" ",                     u""},
        {u"    ",                  u""},
        {u"a",                     u"a"},
        {u" a",                    u"a"},
        {u"a ",                    u"a"},
        {u"   O'Neil  ",           u"O'Neil"},
        {u" a  b ",                u"a  b"},
        {u"\ta\t",                 u"\ta\t"},
        {u" \t a \n ",             u"\t a \n"},
        {u"\u3000维修\u3000",      u"\u3000维修\u3000"},
        {u"\u00A0a\u200B",         u"\u00A0a\u200B"},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(trim_blanks(row.input) == row.expected);
    }
    const TextView with_nul(u" \0 ", 3);
    CHECK(trim_blanks(with_nul) == TextView(u"\0", 1));
}

TEST_CASE("replace_all replaces every occurrence, once, from left to right") {
    struct Row {
        TextView input;
        char16_t from;
        TextView to, expected;
    };
    // clang-format off
    const Row rows[] = {
        {u"",          u'\'', u"''",  u""},
        {u"O'Neil",    u'\'', u"''",  u"O''Neil"},
        {u"'",         u'\'', u"''",  u"''"},
        {u"'''",       u'\'', u"''",  u"''''''"},
        {u"a_b_",      u'_',  u"[_]", u"a[_]b[_]"},
        {u"[a]",       u'[',  u"[[]", u"[[]a]"},
        {u"aXa",       u'x',  u"y",   u"aXa"},
        {u"a-b-c",     u'-',  u"",    u"abc"},
        {u"＇",        u'\'', u"''",  u"＇"},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(replace_all(row.input, row.from, row.to) == row.expected);
    }
}

TEST_CASE("equal_ignoring_case folds ASCII letters only") {
    struct Row {
        TextView left, right;
        bool expected;
    };
    // clang-format off
    const Row rows[] = {
        {u"",          u"",          true},
        {u"TempQty",   u"tempqty",   true},
        {u"AZaz",      u"azAZ",      true},
        {u"a",         u"",          false},
        {u"a",         u"ab",        false},
        {u"a",         u"b",         false},
        {u"@",         u"`",         false},
        {u"[",         u"{",         false},
        {u"É",         u"é",         false},
        {u"K",         u"\u212A",    false},
        {u"数量",      u"数量",      true},
        {u"Ａ",        u"ａ",        false},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.left);
        CAPTURE(row.right);
        CHECK(equal_ignoring_case(row.left, row.right) == row.expected);
        CHECK(equal_ignoring_case(row.right, row.left) == row.expected);
    }
}

TEST_CASE("is_well_formed finds the lone surrogate") {
    struct Row {
        Text input;
        bool expected;
    };
    // clang-format off
    const Row rows[] = {
        {u"",                          true},
        {u"维修",                      true},
        {u"𠮷",                        true},
        {u"a𠮷b😀",                    true},
        {{u'\xD842'},                  false},
        {{u'\xDFB7'},                  false},
        {{u'\xDFB7', u'\xD842'},       false},
        {{u'a', u'\xDFB7'},            false},
        {{u'\xD842', u'a'},            false},
        {{u'\xD842', u'\xE000'},       false},
        {{u'\xD842', u'\xD842', u'\xDFB7'}, false},
        {{u'\xD842', u'\xDFB7', u'\xDFB7'}, false},
        {{u'\xD7FF', u'\xE000', u'\xFFFF', u'\0'}, true},
        {{u'\xD800', u'\xDC00', u'\xDBFF', u'\xDFFF'}, true},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.input);
        CHECK(is_well_formed(row.input) == row.expected);
    }
    const Text pair = u"𠮷";
    CHECK_FALSE(is_well_formed(TextView(pair).substr(0, 1)));  // a view that ends within a pair
}

TEST_CASE("to_utf8 and from_utf8 are each other's inverse on well-formed text") {
    struct Row {
        Text utf16;
        std::string utf8;
    };
    // clang-format off
    const Row rows[] = {
        {u"",                        ""},
        {u"plain",                   "plain"},
        {Text(1, u'\0'),             std::string(1, '\0')},
        {{u'\x7F', u'\x80'},         "\x7F\xC2\x80"},
        {{u'\x7FF', u'\x800'},       "\xDF\xBF\xE0\xA0\x80"},
        {u"维修",                    "\xE7\xBB\xB4\xE4\xBF\xAE"},
        {{u'\xD7FF', u'\xE000'},     "\xED\x9F\xBF\xEE\x80\x80"},
        {{u'\xFFFF'},                "\xEF\xBF\xBF"},
        {{u'\xD800', u'\xDC00'},     "\xF0\x90\x80\x80"},
        {u"𠮷",                      "\xF0\xA0\xAE\xB7"},
        {{u'\xDBFF', u'\xDFFF'},     "\xF4\x8F\xBF\xBF"},
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.utf16);
        CHECK(to_utf8(row.utf16) == row.utf8);
        CHECK(from_utf8(row.utf8) == row.utf16);
    }
}

TEST_CASE("UTF-8 and UTF-16 convert every code point there and back") {
    for (char32_t code_point = 0; code_point <= 0x10FFFF; ++code_point) {
        if (code_point == 0xD800) code_point = 0xE000;
        Text text;
        if (code_point < 0x10000) {
            text = static_cast<char16_t>(code_point);
        } else {
            text = {static_cast<char16_t>(0xD7C0 + (code_point >> 10)),
                    static_cast<char16_t>(0xDC00 + (code_point & 0x3FF))};
        }
        const std::string bytes = to_utf8(text);
        const std::size_t length = code_point < 0x80 ? 1 : code_point < 0x800 ? 2 : code_point < 0x10000 ? 3 : 4;
        if (bytes.size() != length || from_utf8(bytes) != text || !is_well_formed(text))
            FAIL(std::uint32_t{code_point});
    }
}

TEST_CASE("to_utf8 writes U+FFFD for a lone surrogate") {
    const std::string mark = "\xEF\xBF\xBD";
    CHECK(to_utf8(Text{u'\xD842'}) == mark);
    CHECK(to_utf8(Text{u'\xDFB7'}) == mark);
    CHECK(to_utf8(Text{u'a', u'\xDFB7'}) == "a" + mark);
    const Text pair = u"𠮷";
    CHECK(to_utf8(TextView(pair).substr(0, 1)) == mark);
    CHECK(to_utf8(Text{u'a', u'\xD842', u'b'}) == "a" + mark + "b");
    CHECK(to_utf8(Text{u'\xDFB7', u'\xD842'}) == mark + mark);
    CHECK(to_utf8(Text{u'\xD842', u'\xD842', u'\xDFB7'}) == mark + "\xF0\xA0\xAE\xB7");
}

TEST_CASE("from_utf8 reads each byte that is no UTF-8 as one U+FFFD") {
    struct Row {
        std::string input;
        Text expected;
    };
    // clang-format off
    const Row rows[] = {
        {"\x80",                     u"\uFFFD"},                          // a continuation alone
        {"\xBF\xBF",                 u"\uFFFD\uFFFD"},
        {"\xC0\x80",                 u"\uFFFD\uFFFD"},                    // overlong NUL
        {"\xC1\xBF",                 u"\uFFFD\uFFFD"},                    // overlong
        {"\xE0\x9F\xBF",             u"\uFFFD\uFFFD\uFFFD"},              // overlong
        {"\xF0\x8F\xBF\xBF",         u"\uFFFD\uFFFD\uFFFD\uFFFD"},        // overlong
        {"\xED\xA0\x80",             u"\uFFFD\uFFFD\uFFFD"},              // a high surrogate
        {"\xED\xBF\xBF",             u"\uFFFD\uFFFD\uFFFD"},              // a low surrogate
        {"\xF4\x90\x80\x80",         u"\uFFFD\uFFFD\uFFFD\uFFFD"},        // beyond U+10FFFF
        {"\xF5\x80\x80\x80",         u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xFE\xFF",                 u"\uFFFD\uFFFD"},
        {"\xC3",                     u"\uFFFD"},                          // cut off
        {"\xE7\xBB",                 u"\uFFFD\uFFFD"},
        {"\xF0\xA0\xAE",             u"\uFFFD\uFFFD\uFFFD"},
        {"\xE7\xBB" "a",             u"\uFFFD\uFFFDa"},
        {"\xC3\xE7\xBB\xB4",         u"\uFFFD维"},
        {"a\xFF" "b",                u"a\uFFFDb"},
        {"\xEF\xBF\xBD",             u"\uFFFD"},                          // U+FFFD itself
    };
    // clang-format on
    for (const Row& row : rows) {
        CAPTURE(row.expected);
        CHECK(from_utf8(row.input) == row.expected);
    }
}

TEST_SUITE_END();

}  // namespace

}  // namespace vantlo
