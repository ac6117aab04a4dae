#include "ado/native/open_connection.h"

#include <doctest/doctest.h>

#include "support/failures.h"
#include "tests/support/printing.h"
#include "tests/support/temporary_folder.h"

namespace vantlo::test {
namespace {

TEST_CASE("open_connection opens an SQLite file, made if it is missing, or a database in memory") {
    const TemporaryFolder folder;
    open_connection("sqlite:" + folder.file("仓库.db"))->run(u"create table T (a int)");
    CHECK(open_connection("sqlite:" + folder.file("仓库.db"))->run(u"select * from T").yields_rows);
    CHECK(open_connection("sqlite::memory:")->dialect().name == "sqlite");
}

TEST_CASE("open_connection hands every text with an equals sign to the ODBC driver manager") {
    const Caught failure = caught([] { open_connection("Driver=/nonexistent/driver.so;UID=u;PWD=geheim"); });
    CHECK(failure.number == error::unspecified);
    CHECK(failure.account.starts_with("ODBC 01000 0 ("));
}

TEST_CASE("open_connection refuses a text that is neither") {
    for (const char* text : {"", "shop.db", "sqlite"}) {
        INFO(text);
        CHECK(caught([&] { open_connection(text); }).number == error::bad_argument);
    }
}

}  // namespace
}  // namespace vantlo::test
