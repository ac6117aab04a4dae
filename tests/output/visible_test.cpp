#include "output/visible.h"

#include <doctest/doctest.h>

#include <iostream>
#include <sstream>

namespace vantlo::test {
namespace {

TEST_CASE("Control characters are spelled out, all else stays as it is") {
    struct Row {
        std::string text;
        std::string shown;
    };
    const Row rows[] = {
        {"", ""},
        {"W01 曜石黑 𠮷 é", "W01 曜石黑 𠮷 é"},
        {"\x1B[2J\x1B]0;title\x07", "\\u001B[2J\\u001B]0;title\\u0007"},
        {"a\tb\r\nc", "a\\u0009b\\u000D\\u000Ac"},
        {std::string("a\0b", 3), "a\\u0000b"},
        {"\x7F \xC2\x85 \xC2\x9B"
         "31m",
         "\\u007F \\u0085 \\u009B31m"},
        {"\x9B"
         "31m",
         "\\x9B31m"},
        {"ab\xE4\xBB", "ab\\xE4\\xBB"},
        {"\xE2\x80\xAE"
         "abc",
         "\\u202Eabc"},
        {"\xE2\x80\xA8", "\\u2028"},
    };
    for (const Row& row : rows) CHECK(visible(row.text) == row.shown);
    CHECK(visible_lines("a\tb\r\nc\x1B") == "a\tb\\u000D\nc\\u001B");
}

TEST_CASE("stderr spells control characters out, also where a character comes in pieces, but not the program's own") {
    std::ostringstream written;
    std::streambuf* const before = std::cerr.rdbuf(written.rdbuf());
    {
        const VisibleStreams streams;
        std::cerr << "a\x1B[2J" << '\x07' << '\n';
        std::cerr << std::nounitbuf << "\xE4"
                  << "\xBB\x93" << std::flush << std::unitbuf;
        std::ostream(unfiltered(std::cerr)) << "\x1B[K";
    }
    std::cerr.rdbuf(before);
    CHECK(written.str() == "a\\u001B[2J\\u0007\n仓\x1B[K");
}

}  // namespace
}  // namespace vantlo::test
