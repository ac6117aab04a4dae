#pragma once

#include <string>
#include <vector>

#include "ado/odbc/odbc_connection.h"

namespace vantlo::test {

/// A database server that tools/with-servers has started for this run.
struct Server {
    std::string dialect;
    std::string connection_string;

    /// Connects, with further settings beside those of the connection string.
    Owned<OdbcConnection> connect(const std::string& settings = {}) const {
        return Owned(new OdbcConnection(connection_string + ";" + settings));
    }
};

/// The servers of this run. Errors: std::runtime_error if there is none, so that a test cannot pass without any.
std::vector<Server> servers();

/// The one field of a statement's one row.
Variant only_value(NativeConnection& connection, TextView statement);

}  // namespace vantlo::test
