#include "ado/odbc/engine.h"

#include <doctest/doctest.h>

#include "tests/support/printing.h"

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

TEST_CASE("literal_hazard is told by backslashes that escape and by characters that do not come back whole") {
    struct Row {
        std::vector<Variant> probed;
        const char* hazard;
    };
    const Row rows[] = {
        {{u"\\\\"}, ""},
        {{u"\\"}, "takes a backslash"},
        {{u"\\\\", u"𠮷", 1}, ""},
        {{u"\\", u"𠮷", 1}, "takes a backslash"},
        {{u"\\\\", u"?", 1}, "does not bring"},
        {{u"\\\\", u"𠮷", 4}, "does not bring"},  // stored as bytes, or encoded twice
        {{u"\\\\", u"𠮷", Other{u"1"}}, ""},
    };
    for (const Row& row : rows) {
        const std::string hazard = literal_hazard(row.probed);
        INFO(hazard);
        CHECK(hazard.empty() == (*row.hazard == '\0'));
        CHECK(hazard.starts_with(row.hazard));
    }
}

}  // namespace
}  // namespace vantlo::test
