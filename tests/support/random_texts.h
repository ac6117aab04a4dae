#pragma once

#include <doctest/doctest.h>

#include <cstdint>
#include <iterator>
#include <random>
#include <vector>

#include "ado/native/native_connection.h"
#include "automation/text.h"

namespace vantlo::test {

/// Random texts made of what could break out of a literal, and of every other sort of character.
class RandomTexts {
public:
    explicit RandomTexts(std::uint32_t seed) : random_(seed) {}

    Text next() {
        Text text;
        for (std::uint32_t length = below(12); length > 0; --length) text += piece();
        return text;
    }

    std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }

private:
    Text piece() {
        static constexpr const char16_t* dangerous[] = {
            u"'",   u"''",  u"\\",  u"\\'", u"\"",          u"--", u"/*", u"*/",   u";",  u"\n",   u"\r",
            u"\t",  u" ",   u"  ",  u"?",   u":x",          u"@p", u"$1", u"{",    u"}",  u"{d '", u"[",
            u"]",   u"%",   u"_",   u"`",   u"' or 1=1 --", u"|",  u"#",  u"null", u"0x", u"X'",   u"　",
            u"​", u"﻿", u"￾", u"￿", u"𠮷",          u"😀",  u"箱", u"é",    u"ﬁ",
        };
        switch (below(3)) {
            case 0: return dangerous[below(std::size(dangerous))];
            case 1: return Text(1, static_cast<char16_t>(1 + below(0x7F)));
            default: return from_code_point(below(0x10FFFF) + 1);
        }
    }

    static Text from_code_point(std::uint32_t code) {
        if (code >= 0xD800 && code < 0xE000) code -= 0x800;  // halves of pairs are no characters
        if (code < 0x10000) return Text(1, static_cast<char16_t>(code));
        code -= 0x10000;
        return {static_cast<char16_t>(0xD800 + (code >> 10)), static_cast<char16_t>(0xDC00 + (code & 0x3FF))};
    }

    std::mt19937 random_;
};

/// How many random texts an engine reads back as something else than `expected(text)` when `literal(text)` is sent.
template <typename Literal, typename Expected>
int texts_that_do_not_come_back(NativeConnection& connection, int cases, Literal literal, Expected expected) {
    constexpr int literals_a_statement = 20'000;  // some 600 kB of text
    RandomTexts texts(20240305);
    int wrong = 0;
    for (int done = 0; done < cases; done += literals_a_statement) {
        std::vector<Text> sent;
        Text statement = u"with T(v) as (values ";
        for (int i = 0; i < literals_a_statement; ++i) {
            sent.push_back(texts.next());
            statement += (i == 0 ? u"(" : u",(") + literal(sent.back()) + u")";
        }
        const ResultTable result = connection.run(statement + u") select v from T");
        REQUIRE(result.columns.size() == 1);
        REQUIRE(result.rows.size() == sent.size());
        for (std::size_t i = 0; i < sent.size(); ++i) {
            if (result.rows[i][0] == Variant(expected(sent[i]))) continue;
            if (++wrong <= 10) FAIL_CHECK("does not come back: " << to_utf8(sent[i]));
        }
    }
    return wrong;
}

}  // namespace vantlo::test
