#include "tests/support/servers.h"

#include <cstdlib>
#include <stdexcept>

namespace vantlo::test {

std::vector<Server> servers() {
    struct Row {
        const char* dialect;
        const char* variable;
    };
    static constexpr Row rows[] = {{"postgresql", "VANTLO_POSTGRESQL"}, {"mariadb", "VANTLO_MARIADB"}};
    std::vector<Server> found;
    for (const Row& row : rows) {
        if (const char* const connection_string = std::getenv(row.variable)) {
            found.push_back({row.dialect, connection_string});
        }
    }
    if (found.empty()) throw std::runtime_error("there is no server: run this through tools/with-servers");
    return found;
}

Variant only_value(NativeConnection& connection, TextView statement) {
    const ResultTable result = connection.run(statement);
    if (result.rows.size() != 1 || result.columns.size() != 1) {
        throw std::runtime_error("not one value: " + to_utf8(statement));
    }
    return result.rows[0][0];
}

}  // namespace vantlo::test
