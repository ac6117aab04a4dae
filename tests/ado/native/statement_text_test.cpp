#include "ado/native/statement_text.h"

#include <doctest/doctest.h>

#include "support/failures.h"
#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

TEST_CASE("A statement with a NUL or half a surrogate pair is refused, and every other one is UTF-8") {
    CHECK(checked_utf8(u"select '𠮷野家'") == "select '𠮷野家'");
    for (const Text& text : {Text(u"a\0b", 3), Text{u'a', 0xD842}, Text{0xDFB7, u'a'}}) {
        CHECK(caught([&] { checked_utf8(text); }).number == error::bad_argument);
    }
}

TEST_CASE("A script falls apart at the semicolons outside quotes and comments") {
    struct Row {
        const char* script;
        std::vector<Text> statements;
    };
    const Row rows[] = {
        {"", {}},
        {" ;\n; -- nothing\n", {}},
        {"select 1", {u"select 1"}},
        {"-- one; two\nselect 1 ;\n\n-- and\nselect 2;", {u"select 1", u"select 2"}},
        {"select ';--', \"a;b\" from T; select 'it''s; one'",
         {u"select ';--', \"a;b\" from T", u"select 'it''s; one'"}},
        {"select 1 -- the first\n  + 2", {u"select 1 \n  + 2"}},
        {"select 'unfinished; ", {u"select 'unfinished;"}},
        {"select '仓库'; -- the end", {u"select '仓库'"}},
        {"select 1; do $a$ begin; $b$; end $a$; select $$;$$, $1;",
         {u"select 1", u"do $a$ begin; $b$; end $a$", u"select $$;$$, $1"}},
        {"do $a$ unfinished;", {u"do $a$ unfinished;"}},
        {"select 1;\ndelimiter //\nbegin one; two; end//\n\n-- and\nselect 2//\ndelimiter ;\nselect 3;",
         {u"select 1", u"begin one; two; end", u"select 2", u"select 3"}},
        {"select delimiter from T; select 4", {u"select delimiter from T", u"select 4"}},
        {"do /*! begin; end */; select /* it's */ 1; /*", {u"do /*! begin; end */", u"select /* it's */ 1", u"/*"}},
    };
    for (const Row& row : rows) {
        INFO(row.script);
        CHECK(statements_of(row.script) == row.statements);
    }
}

}  // namespace
}  // namespace vantlo::test
