#include "ado/odbc/connection_string.h"

#include <doctest/doctest.h>

namespace vantlo::test {
namespace {

TEST_CASE("without_password hides the passwords of a connection string wherever they stand in a text") {
    struct Row {
        const char* connection_string;
        const char* text;
        const char* hidden;
    };
    const Row rows[] = {
        {"UID=u;PWD=geheim", "login geheim failed: PWD=geheim;", "login *** failed: PWD=***;"},
        {"Driver={A;PWD=no};pwd = se cret;UID=u", "no, se cret!", "no,***!"},
        {"Driver={A};Pwd={se;}}cr=et};UID=u", "'se;}cr=et' refused", "'***' refused"},
        {"PASSWORD=one;Server=s;PWD=two", "one two three", "*** *** three"},
        {"PWD={a}", "a", "***"},
        {"PWD={unfinished", "unfinished business", "*** business"},
        {"PWD=*", "***", "*********"},
        {"UID=PWD;PWD=;Password={}", "nothing to hide", "nothing to hide"},
        {"DSN=shop;UID=u", "nothing to hide", "nothing to hide"},
        {"Passwd=one;SSLpwd={two}", "one two three", "*** *** three"},
        {"PWD", "PWD", "PWD"},
        {"", "nothing to hide", "nothing to hide"},
    };
    for (const Row& row : rows) {
        INFO(row.connection_string);
        CHECK(without_password(row.text, row.connection_string) == row.hidden);
    }
}

TEST_CASE("with_password puts the password at the end, closed by a semicolon, and takes empty ones out") {
    CHECK(with_password("DSN=shop;UID=u", "geheim") == "DSN=shop;UID=u;PWD={geheim};");
    CHECK(with_password("DSN=shop;", "a;b}c") == "DSN=shop;PWD={a;b}}c};");
    CHECK(with_password("DSN=shop;PWD=;UID=u", "x") == "DSN=shop;UID=u;PWD={x};");
    CHECK(with_password("Password={};DSN=shop", "x") == "DSN=shop;PWD={x};");
    CHECK(with_password("pwd =", "x") == "PWD={x};");
}

TEST_CASE("without_needless_braces leaves braces where a value needs them, and those of drivers and passwords") {
    struct Row {
        const char* given;
        const char* plain;
    };
    const Row rows[] = {
        {"Driver={A};Database={shop};UID={u}", "Driver={A};Database=shop;UID=u"},
        {"driver={A B};Database={shop};PWD={x};", "driver={A B};Database=shop;PWD={x};"},
        {"Database={a;b};UID={ u}", "Database={a;b};UID={ u}"},
        {"Database={a}}b};UID={}", "Database={a}}b};UID={}"},
        {"Database=shop;;UID=u;", "Database=shop;;UID=u;"},
        {"DSN=shop", "DSN=shop"},
        {"shop", "shop"},
        {"", ""},
    };
    for (const Row& row : rows) {
        INFO(row.given);
        CHECK(without_needless_braces(row.given) == row.plain);
    }
}

}  // namespace
}  // namespace vantlo::test
