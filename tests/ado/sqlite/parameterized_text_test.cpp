#include "ado/sqlite/parameterized_text.h"

#include <doctest/doctest.h>

#include <string>

namespace vantlo::test {
namespace {

/// A statement's shape, and behind it its literals: `|'text'`, `|-12`, `|2.5r`; nothing if it is not to be parameterized.
std::string parameterized_form(std::string_view statement) {
    ParameterizedText parameterized;
    if (!parameterize(statement, parameterized)) return {};
    std::string form = parameterized.shape;
    for (const Literal& literal : parameterized.literals) {
        form += literal.is_negative ? "|-" : "|";
        const char* const quote = literal.kind == Literal::Kind::text ? "'" : "";
        form.append(quote).append(literal.spelling).append(quote);
        if (literal.kind == Literal::Kind::real) form += 'r';
    }
    return form;
}

struct FormRow {
    const char* statement;
    const char* form;
};

TEST_CASE("parameterize replaces texts and numbers, and leaves all else as it stands") {
    // clang-format off
    const FormRow rows[] = {
        {"select * from T",                       "select * from T"},
        {"a='x'",                                 "a=?|'x'"},
        {"a=''",                                  "a=?|''"},
        {"a='it''s'",                             "a=?|'it''s'"},
        {"a=''''",                                "a=?|''''"},
        {"a='x'and b='仓库 — ? -- /* 5'",         "a=?and b=?|'x'|'仓库 — ? -- /* 5'"},
        {"a = 5,b=-5, c= 2.5e-3",                 "a = ?,b=?, c= ?|5|-5|2.5e-3r"},
        {"a=1E+15 and b=12E5",                    "a=? and b=?|1E+15r|12E5r"},
        {"a=0 and b=1 and c=-1 and d=-0",         "a=0 and b=1 and c=-1 and d=-0"},
        {"a=00 and b=007 and c=10",               "a=00 and b=007 and c=?|10"},
        {"a=0.0 and b=-0.0 and c=1.0",            "a=? and b=? and c=?|0.0r|-0.0r|1.0r"},
        {"a=999999999999999999",                  "a=?|999999999999999999"},
        {"a = a - 5",                             "a = a - ?|5"},
        {"a = a -5",                              "a = a -?|5"},
        {"a = a - -5",                            "a = a - ?|-5"},
        {"a = 3 -5",                              "a = ? -?|3|5"},
        {"a = 'x' -5",                            "a = ? -?|'x'|5"},
        {"a = - 5",                               "a = - ?|5"},
        {"a<-5 or a>=-5 or a!=-5 or a<>5",        "a<? or a>=? or a!=? or a<>?|-5|-5|-5|5"},
        {"values(-5,-2.5)",                       "values(?,?)|-5|-2.5r"},
        {"where -5",                              "where -?|5"},
        {"T1.a2=5\t\r\n\f",                       "T1.a2=?\t\r\n\f|5"},
        {"数量=5",                                "数量=?|5"},
    };
    // clang-format on
    for (const FormRow& row : rows) CHECK(parameterized_form(row.statement) == row.form);
}

TEST_CASE("parameterize steps aside for a text that it does not understand to the last character") {
    const char* const statements[] = {
        "a=5--3",   "a=5 -- c",  "a=5 /* c */", "a=5;",    "\"a\"=5",    "[a]=5",    "`a`=5",
        "a=?",      "a=?1",      "a=:x",        "a=@x",    "a=$x",       "a$=5",     "a=#1",
        "a=x'41'",  "a=X'41'",   "a='x",        "a='x''",  "a=0x10",     "a=5.",     "a=.5",
        "a=5e",     "a=5e+",     "a=5b",        "a=5.5.5", "a=1_000",    "a=5é",     "a=1000000000000000000",
        "a=b||'x'", "a=b&3",     "a=~3",        "a=b%3",   "a!5",        "a\v=5",    "a=\x01",
        "a=n'x'",   "\uFEFFa=5", "a={d}",       "a=\\5",   "a='x'\"y\"", "a=5.5e5.", "a=-x'41'",
        "a=-0x10",  "a=5'x'y'",
    };
    for (const char* const statement : statements) {
        INFO(std::string(statement));
        CHECK(parameterized_form(statement).empty());
    }
    CHECK(!parameterized_form("a='" + std::string(60'000, 'x') + "'").empty());
    CHECK(parameterized_form("a='" + std::string(70'000, 'x') + "'").empty());
}

TEST_CASE("is_understood accepts the four forms with marks for operands") {
    const char* const shapes[] = {
        "select id,Unit,UnitConverter from GoodsUnit where id=? and Unit=?",
        "select * from Inventory where WID=? and GId=? and Model1=? and Model2=? and Status=0",
        "Select A.*,B.x from A left join B on A.id = B.id where BillId=? order by A.id, B.x desc, y asc",
        "SELECT * FROM A, B WHERE A.a=B.a OR A.b<>?",
        "select * from T",
        "update Inventory set InQty = InQty + ?,CurrentQty = CurrentQty - ?,Remarks =? where WID=? and Status= -1",
        "update main.T set a = null",
        "insert into Inventory(WID,GId) values(?,null)",
        "insert into T values( ?,0,-1 )",
        "delete from T where a < ? * 0 / b + c",
        "delete from T",
    };
    for (const char* const shape : shapes) {
        INFO(std::string(shape));
        CHECK(is_understood(shape));
    }
}

TEST_CASE("is_understood refuses marks in any other place, and words that it does not know") {
    const char* const shapes[] = {
        "",
        "?",
        "selct * from T where a=?",
        "select ? from T",
        "select a ? from T",
        "select 1 from T",
        "select ?",
        "select a",
        "select a where a = ?",
        "select * from ? where a=0",
        "select * from T where ?",
        "select * from T where a",
        "select * from T where a=? ?",
        "select * from T where a=??",
        "select * from T where a=-?",
        "select * from T where not a=?",
        "select * from T where (a=?)",
        "select * from T where abs(a)=?",
        "select * from T where a like ?",
        "select * from T where a is ?",
        "select * from T where a in (?,?)",
        "select * from T where a between ? and ?",
        "select * from T where a=? collate nocase",
        "select * from T where a=? group by b",
        "select * from T where a=? limit ?",
        "select * from T where a=? order by ?",
        "select * from T where a=? order by 1",
        "select * from T where a=? order by a+?",
        "select * from T where a=? order by a limit ?",
        "select * from T where a=? union select * from U",
        "select * from T where a=case",
        "select * from T where a==?=b",
        "select * from T where a->?=b",
        "select * from T where a.?=b",
        "select count(*) from T where a=?",
        "select distinct a from T where a=?",
        "select a as b from T where a=?",
        "select * from T left join U on T.a=? where b=?",
        "update T set ?=a",
        "update T set a=? where",
        "update T set a=?,",
        "update T set (a,b)=(?,?)",
        "update T set a=? from U",
        "update T set a=? returning a",
        "update or replace T set a=?",
        "update ? set a=?",
        "insert into T(?) values(?)",
        "insert into T(a) values(?),(?)",
        "insert into T(a) values(?",
        "insert into T(a) values()",
        "insert into T(a) values(?) on conflict do nothing",
        "insert or replace into T values(?)",
        "insert into T select ?",
        "insert into T default values",
        "replace into T values(?)",
        "delete T where a=?",
        "delete from T where a=? limit ?",
        "delete from T indexed by I where a=?",
        "create table T (a int default ?)",
        "pragma user_version = ?",
        "explain delete from T where a=?",
        "with U as (select 1) select * from U where a=?",
    };
    for (const char* const shape : shapes) {
        INFO(std::string(shape));
        CHECK(!is_understood(shape));
    }
}

}  // namespace
}  // namespace vantlo::test
