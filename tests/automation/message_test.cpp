#include "automation/message.h"

#include <doctest/doctest.h>

namespace vantlo::test {
namespace {

TEST_CASE("A message says one thing and several things by their names, and numbers alone where there is one form") {
    constexpr Message message = {"{} 张单据，还剩 {} 张", "{:bill|bills}, {:is|are} left"};
    struct Row {
        int bills;
        int left;
        const char* english;
        const char* chinese;
    };
    const Row rows[] = {
        {0, 2, "0 bills, 2 are left", "0 张单据，还剩 2 张"},
        {1, 1, "1 bill, 1 is left", "1 张单据，还剩 1 张"},
        {2, 0, "2 bills, 0 are left", "2 张单据，还剩 0 张"},
        {11, 21, "11 bills, 21 are left", "11 张单据，还剩 21 张"},
    };
    for (const Row& row : rows) {
        CHECK(say(Language::english, message, Count(row.bills), Count(row.left)) == row.english);
        CHECK(say(Language::chinese, message, Count(row.bills), Count(row.left)) == row.chinese);
    }
}

}  // namespace
}  // namespace vantlo::test
