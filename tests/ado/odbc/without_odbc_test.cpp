#include <doctest/doctest.h>

#include "ado/native/open_connection.h"
#include "support/failures.h"

// Linked with what stands for the adapter in a build without ODBC.

namespace vantlo::test {
namespace {

TEST_CASE("A build without ODBC says that a server needs it, and opens SQLite's files") {
    const Caught failure = caught([] { open_connection("DSN=shop"); });
    CHECK(failure.number == error::bad_argument);
    CHECK(failure.account.starts_with(
        "a database server is reached through ODBC, and this program was built without it"));
    CHECK(open_connection("sqlite::memory:")->dialect().name == "sqlite");
}

}  // namespace
}  // namespace vantlo::test
