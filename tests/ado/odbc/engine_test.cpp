#include "ado/odbc/engine.h"

#include <doctest/doctest.h>

#include <string>

namespace vantlo::test {
namespace {

TEST_CASE("engine_named finds an engine in the name that a driver gives it") {
    CHECK(std::string(engine_named("PostgreSQL").dialect) == "postgresql");
    CHECK(std::string(engine_named("MariaDB").dialect) == "mariadb");
    CHECK(std::string(engine_named("Microsoft SQL Server").dialect) == "sqlserver");
    CHECK(std::string(engine_named("ACCESS").dialect) == "access");
    CHECK(std::string(engine_named("").dialect) == "unknown");
    CHECK(std::string(engine_named("Elsewhere").dialect) == "unknown");
}

}  // namespace
}  // namespace vantlo::test
