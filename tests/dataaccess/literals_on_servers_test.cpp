#include <doctest/doctest.h>

#include "dataaccess/sql_literals.h"
#include "tests/support/random_texts.h"
#include "tests/support/servers.h"

// Any text becomes one literal on the servers too; their rules for literals and their drivers' differ from SQLite's.

namespace vantlo::test {
namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int cases = 100'000;  // some three times slower, and the optimised build has tried the others
#else
constexpr int cases = 1'000'000;
#endif

TEST_CASE("GetSqlVal makes of every text one literal that each server reads back trimmed") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const auto connection = server.connect();
        CHECK(texts_that_do_not_come_back(
                  *connection, cases, [](const Text& text) { return GetSqlVal(text); },
                  [](const Text& text) { return Text(trim_blanks(text)); }) == 0);
        MESSAGE(cases << " literals on " << server.dialect);
    }
}

}  // namespace
}  // namespace vantlo::test
